// Encoded words on lines of their length (RFC 1522 section 2): a text that is too long for its line becomes
// several words, each on a line of its own.
#ifndef VEL_CODEC_ENCODED_WORD_PLACING_H
#define VEL_CODEC_ENCODED_WORD_PLACING_H

#include <cstdint>
#include <string>
#include <string_view>

#include "codec/encoded_word_text.h"

namespace vel {

// Appends words and the line breaks between them.
//   prefix  "=?charset?Q?" or "=?charset?B?"
//   text    in that encoding
//   column  of the line's next character; is moved on
void place_words(std::string& lines, std::int64_t& column, std::string_view prefix, std::string_view text,
                 WordMethod method);

}  // namespace vel

// The same as a new text, for the caller to free; null for a null argument and without memory.
//   method  0: "B", else "Q"
char* prcoessEncodedWord(int* column, const char* prefix, const char* text, int method);

#endif
