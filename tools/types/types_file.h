// Files of types: comma-separated texts (RFC 4180), the first line being the names of the fields.
#ifndef VEL_TOOLS_TYPES_TYPES_FILE_H
#define VEL_TOOLS_TYPES_TYPES_FILE_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/types/type_row.h"

namespace vel::command {

struct TypesFile {
    std::vector<TypeRow> rows;
    std::vector<std::string> faults;  // "12: the extension is missing", the first ones; with any, the file is no good
};

// Lines end in LF or CR LF; empty ones are stepped over. A field stands in double quotes where it holds a comma or a
// quote, which is doubled there. An extension stands in one line only, whatever its letter case.
TypesFile read_types(std::string_view text);

std::string types_heading();
std::string types_line(const TypeRow& row);

}  // namespace vel::command

#endif
