// The caller's time zone.
#ifndef VEL_TOOLS_IO_CALLER_ZONE_H
#define VEL_TOOLS_IO_CALLER_ZONE_H

#include <string>

namespace vel::command {

// TZ as it stood at the first call, which is to come before the library's start-up: that sets TZ. Empty: not set.
const std::string& caller_zone();

}  // namespace vel::command

#endif
