// The configuration file that vel init writes.
#ifndef VEL_TOOLS_SETTINGS_SAMPLE_FILE_H
#define VEL_TOOLS_SETTINGS_SAMPLE_FILE_H

#include <string>
#include <string_view>
#include <vector>

namespace vel::command {

struct Given {
    std::string_view section;
    std::string_view key;
    std::string value;
};

// Every setting with its help; those that are given with their values, the others as comments with their defaults.
std::string sample_file(const std::vector<Given>& given);

}  // namespace vel::command

#endif
