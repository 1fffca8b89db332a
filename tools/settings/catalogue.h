// All settings of ostra.ini: those of the library, of the local libraries and of the command.
#ifndef VEL_TOOLS_SETTINGS_CATALOGUE_H
#define VEL_TOOLS_SETTINGS_CATALOGUE_H

#include <cstddef>
#include <span>
#include <string_view>

#include "tools/settings/value_kinds.h"

namespace vel::command {

struct SettingRow {
    const char* section;
    const char* key;
    const char* fallback;  // what counts when the key is missing
    std::size_t size;      // of the smallest buffer that it is read into, its NUL included; 0: it is not cut
    Kind* kind;
    std::string_view help;  // empty: the help of the row before is about this one too
};

// In the order in which ostra.ini has them: by section.
std::span<const SettingRow> all_settings();

// The row of a setting, which must be there.
const SettingRow& row_of(std::string_view section, std::string_view key);

}  // namespace vel::command

#endif
