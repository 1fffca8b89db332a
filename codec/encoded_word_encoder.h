// Header text with bytes above 127, written in encoded words (RFC 1522 section 5).
#ifndef VEL_CODEC_ENCODED_WORD_ENCODER_H
#define VEL_CODEC_ENCODED_WORD_ENCODER_H

#include <string>
#include <string_view>

#include "codec/encoded_word_text.h"

namespace vel {

// Wherein the callers differ.
struct WordEncoding {
    WordMethod method;
    std::string charset;              // written as it is
    std::string_view before_comment;  // "(", with or without a blank
    bool enabled = true;              // false: encode_text leaves it as it is
};

bool is_ascii(std::string_view text);

// Text without comments: each run of words with bytes above 127 becomes one or more encoded words.
std::string encode_words(std::string_view text, const WordEncoding& encoding);

// Text in which comments stand in parentheses.
std::string encode_text(std::string_view text, const WordEncoding& encoding);

// A field's value, of whatever kind: of one address its phrase, its address and its comment are encoded, each
// by itself; anything else is text.
std::string encode_value(std::string_view value, const WordEncoding& encoding);

}  // namespace vel

#endif
