// Texts of header fields as people read them.
#ifndef VEL_TOOLS_TEXT_READABLE_H
#define VEL_TOOLS_TEXT_READABLE_H

#include <string>
#include <string_view>

namespace vel::command {

struct Readable {
    std::string text;       // UTF-8; the bytes as they stand when they could not be converted
    bool converted = true;  // false: the charset is not known, or they are no text of it
    bool operator==(const Readable&) const = default;
};

// A text in which encoded words may stand; what stands between them must be UTF-8 (RFC 6532).
Readable readable(std::string_view text);

// Bytes of a charset that is named beside them.
Readable readable(std::string_view bytes, std::string_view charset);

// In the form of visible(), marked when it was not converted.
std::string shown(const Readable& text);

}  // namespace vel::command

#endif
