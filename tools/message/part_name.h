// What an entity is called.
#ifndef VEL_TOOLS_MESSAGE_PART_NAME_H
#define VEL_TOOLS_MESSAGE_PART_NAME_H

#include <optional>
#include <string>

#include "tools/io/lines.h"
#include "tools/text/readable.h"
#include "vel/mime.h"

namespace vel::command {

// The name that a message gives an entity: the disposition's filename, the type's name, or the name that
// MimeGetBody has found in a uuencoded or BinHex body. Nothing when there is none or it is empty.
std::optional<Readable> given_name(const MimeMsg& record);

// Its Content-Description, continuation lines too, of which the record has only the first line. lines are
// those of its file. Throws Failure.
std::optional<Readable> description_of(const MimeMsg& record, LineReader& lines);

// "text/plain"; what a record without a type is: text.
std::string type_of(const MimeMsg& record);

// An extension that fits a record's type, with its dot.
std::string extension_of(const MimeMsg& record);

}  // namespace vel::command

#endif
