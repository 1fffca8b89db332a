// The charsets that mail names.
#ifndef VEL_TOOLS_TEXT_CHARSET_NAMES_H
#define VEL_TOOLS_TEXT_CHARSET_NAMES_H

#include <string_view>

namespace vel::command {

constexpr const char* kUtf8 = "UTF-8";

// The converter's name of a charset, in any of the spellings that are in use; null for one that is not known.
// Only those of a list are: no message chooses among all that the C library can load. US-ASCII, and names that
// say that nothing is known, are kUtf8, of which ASCII is a part.
const char* known_charset(std::string_view name);

}  // namespace vel::command

#endif
