// A file type as people write it: the texts of one line of a types file.
#ifndef VEL_TOOLS_TYPES_TYPE_ROW_H
#define VEL_TOOLS_TYPES_TYPE_ROW_H

#include <array>
#include <string>
#include <string_view>

#include "vel/magic.h"

namespace vel::command {

struct TypeRow {
    std::string extension;
    std::string type;
    std::string subtype;
    std::string encoding;
    std::string second_subtype;
    std::string mac_type;
    std::string creator;
};

// A field of a row, and what a types file calls it.
struct TypeField {
    std::string_view name;
    std::string TypeRow::*text;
};

// In the order of a types file.
inline constexpr std::array kTypeFields{
    TypeField{"extension", &TypeRow::extension},
    TypeField{"type", &TypeRow::type},
    TypeField{"subtype", &TypeRow::subtype},
    TypeField{"encoding", &TypeRow::encoding},
    TypeField{"second subtype", &TypeRow::second_subtype},
    TypeField{"mac type", &TypeRow::mac_type},
    TypeField{"creator", &TypeRow::creator},
};

// Why a row cannot be in the table; empty when it can. Its files may hold any bytes, so its encoding has to carry them.
std::string fault_of(const TypeRow& row);

MagicRecord record_of(const TypeRow& row);  // of one without fault
TypeRow row_of(const MagicRecord& record);

}  // namespace vel::command

#endif
