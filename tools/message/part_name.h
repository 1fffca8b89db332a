// What an entity is called.
#ifndef VEL_TOOLS_MESSAGE_PART_NAME_H
#define VEL_TOOLS_MESSAGE_PART_NAME_H

#include <optional>
#include <string>

#include "vel/mime.h"

namespace vel::command {

// The name that a message gives an entity, as it stands there: the disposition's filename, the type's
// name, or the name that MimeGetBody has found in a uuencoded or BinHex body. Nothing when there is none
// or it is empty.
std::optional<std::string> given_name(const MimeMsg& record);

// "text/plain"; what a record without a type is: text.
std::string type_of(const MimeMsg& record);

// An extension that fits a record's type, with its dot.
std::string extension_of(const MimeMsg& record);

}  // namespace vel::command

#endif
