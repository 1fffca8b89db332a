#include "mime/header_words.h"

#include "vel/words.h"

namespace vel {

// A line with a NUL in it stays, too: as a text it would lose what stands behind, its line end first of all.
COwned<char> decode_header_words(std::string_view line) {
    if (line.find('\0') != line.npos) return nullptr;
    return COwned<char>(rfc1522decoding(line.data()));
}

}  // namespace vel
