// The two forms in which bytes of a message, which may be anything, are shown.
#ifndef VEL_TOOLS_TEXT_TEXT_FORMS_H
#define VEL_TOOLS_TEXT_TEXT_FORMS_H

#include <string>
#include <string_view>

namespace vel::command {

// For people: control characters, bytes that are not UTF-8 and the backslash are escaped (\n, \x1b,
// \u202e, \\), so that no name in a message can steer a terminal.
std::string visible(std::string_view bytes);

// For JSON: UTF-8 as it is; each other byte, 0x80 to 0xFF, as the private character U+F780 to U+F7FF.
// To give every character one meaning, these 128 characters of a message itself are taken byte by byte.
// Back: each character U+F780 to U+F7FF is the byte (code - U+F700), every other one its UTF-8.
std::string json_text(std::string_view bytes);

}  // namespace vel::command

#endif
