// Header text with its encoded words decoded (RFC 1522 section 6).
#ifndef VEL_CODEC_ENCODED_WORD_DECODER_H
#define VEL_CODEC_ENCODED_WORD_DECODER_H

#include <string_view>

#include "frame/owned.h"

namespace vel {

// Which words are decoded; the others stay as they stand.
struct WordDecoding {
    std::string_view charset;  // words in it; a word may name a prefix of it
    bool every_charset;
};

COwned<char> decode_words(std::string_view text, const WordDecoding& decoding);

}  // namespace vel

#endif
