// Encoded words in the lines of a header block.
#ifndef VEL_MIME_HEADER_WORDS_H
#define VEL_MIME_HEADER_WORDS_H

#include <string_view>

#include "frame/owned.h"

namespace vel {

// The line with its encoded words decoded as the settings say; null for a line that stays as it was read.
//   line  ends in NUL, as the line reader hands it out
COwned<char> decode_header_words(std::string_view line);

}  // namespace vel

#endif
