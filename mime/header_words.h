// The seam for encoded words in header lines.
#ifndef VEL_MIME_HEADER_WORDS_H
#define VEL_MIME_HEADER_WORDS_H

#include "frame/owned.h"

namespace vel {

// The line with its encoded words decoded; null for a line that stays as it was read. No decoder
// stands behind this yet, so every line does.
inline COwned<char> decode_header_words(const char* /*line*/) { return nullptr; }

}  // namespace vel

#endif
