// Bytes that are written in hexadecimal digits.
#ifndef VEL_TOOLS_TEXT_HEX_ESCAPES_H
#define VEL_TOOLS_TEXT_HEX_ESCAPES_H

#include <string>
#include <string_view>

namespace vel::command {

// Puts bytes for the escapes that begin with a mark, "=E9" or "%e9"; one that is none stays.
std::string without_hex_escapes(std::string_view text, char mark);

}  // namespace vel::command

#endif
