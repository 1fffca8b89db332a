// Time zones, as the C library takes them from TZ.
#ifndef VEL_TOOLS_SETTINGS_ZONE_H
#define VEL_TOOLS_SETTINGS_ZONE_H

#include <string>
#include <string_view>

namespace vel::command {

// A value of [Gateway] TimeZone that begins so leaves TZ as it is.
constexpr std::string_view kLeavesZoneAlone = "xxx";

constexpr std::size_t kLongestZone = 15;  // bytes that the setting takes

// Whether the C library finds a zone of that name, or reads one out of it ("CET-1CEST,M3.5.0,M10.5.0/3"). Whatever
// is neither counts as UTC there, without a word.
bool is_zone(std::string_view text);

struct MachineZone {
    std::string value;   // for [Gateway] TimeZone
    std::string remark;  // what is to be known of it; empty: nothing
};

// The zone that a program without a setting has: that of TZ, as the caller has it, or of /etc/localtime. A name that
// the setting has no room for is replaced: by the rule at the end of its file where that fits, else by the value that
// leaves the zone alone.
MachineZone zone_of_machine();

}  // namespace vel::command

#endif
