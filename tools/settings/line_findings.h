// What is wrong with the lines of a configuration file, their values aside.
#ifndef VEL_TOOLS_SETTINGS_LINE_FINDINGS_H
#define VEL_TOOLS_SETTINGS_LINE_FINDINGS_H

#include <string_view>
#include <vector>

#include "tools/settings/effective.h"

namespace vel::command {

struct LineFindings {
    std::vector<uint64_t> lines;  // of the settings of the catalogue, in its order; 0: on none
    std::vector<ConfigFinding> kept;
    uint64_t left_out = 0;
};

LineFindings look_at_lines(std::string_view text);

}  // namespace vel::command

#endif
