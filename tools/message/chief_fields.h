// The header lines that a reader of mail looks at.
#ifndef VEL_TOOLS_MESSAGE_CHIEF_FIELDS_H
#define VEL_TOOLS_MESSAGE_CHIEF_FIELDS_H

#include <string>

#include "tools/io/library_owned.h"

namespace vel::command {

// From, To, Cc, Date and Subject of the header block between two offsets of a file, for people: a line an address,
// encoded words in UTF-8. Addresses and dates stay as they are written, those too that the library leaves out.
// Throws Failure.
std::string chief_fields(const std::string& path, Range block);

}  // namespace vel::command

#endif
