// The header fields for which the parser refuses a message.
#ifndef VEL_TOOLS_REFUSED_FIELDS_H
#define VEL_TOOLS_REFUSED_FIELDS_H

#include <string>
#include <vector>

#include "tools/library_owned.h"

namespace vel::command {

// Walks through a message's header blocks as the parser does and hands every MIME field to the library's
// field parser. A field is refused when that fails, and so is the Content-Type of a multipart that has
// no boundary parameter or whose first delimiter line never comes.
//   nested  look into enclosed messages
// Returns the fields' bytes, continuation lines included, in order. The settings in force decide about
// the grammar; the lines that the library logs meanwhile are the caller's to drop.
std::vector<Range> refused_fields(const std::string& path, bool nested);

}  // namespace vel::command

#endif
