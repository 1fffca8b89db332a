// The text of one encoded word, in the encodings "Q" and "B" (RFC 1522 section 4).
#ifndef VEL_CODEC_ENCODED_WORD_TEXT_H
#define VEL_CODEC_ENCODED_WORD_TEXT_H

#include <string>
#include <string_view>

#include "codec/bytes.h"

namespace vel {

enum class WordMethod : int { b = 0, q = 1 };

std::string encoded_text(std::string_view plain, WordMethod method);

// Writes what a word's text stands for: never more bytes than the text has.
void put_decoded_text(std::string_view text, WordMethod method, Cursor& out);

}  // namespace vel

#endif
