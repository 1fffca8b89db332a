// Rules of time zones as POSIX has them in TZ (XBD section 8.3).
#ifndef VEL_TOOLS_SETTINGS_ZONE_RULE_H
#define VEL_TOOLS_SETTINGS_ZONE_RULE_H

#include <string_view>

namespace vel::command {

// Whether a text is one: "UTC0", "EST5EDT", "CET-1CEST,M3.5.0,M10.5.0/3", "<-03>3".
bool is_zone_rule(std::string_view text);

}  // namespace vel::command

#endif
