// The settings that are in force, and what is wrong with them.
#ifndef VEL_TOOLS_SETTINGS_EFFECTIVE_H
#define VEL_TOOLS_SETTINGS_EFFECTIVE_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/settings/catalogue.h"
#include "tools/settings/settings_file.h"

namespace vel::command {

struct Effective {
    const SettingRow* row;
    std::string value;   // as the library has it
    uint64_t line;       // of the file; 0: the default
    std::size_t stands;  // how many bytes of value the file has, of which the library's buffer may take fewer
};

struct ConfigFinding {
    uint64_t line;  // of the file; 0: of no line
    std::string what;
    bool remark = false;  // no fault
};

struct Configuration {
    SettingsFile file;
    std::vector<Effective> settings;
    std::vector<ConfigFinding> findings;  // in the order of the lines, those of no line last
    uint64_t findings_left_out = 0;       // beyond the limit
};

Configuration read_configuration();

// The value of one setting, as the library's reader hands it out to a buffer of the row's size.
std::string value_of(const SettingRow& row);

}  // namespace vel::command

#endif
