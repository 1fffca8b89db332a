// What the record database writes to the log.
#ifndef VEL_PLATFORM_DIAMOND_REPORT_H
#define VEL_PLATFORM_DIAMOND_REPORT_H

#include <string>

namespace vel {

// "CALL: reason." at level 1. Never fails, and keeps errno.
void report(const char* call, const char* reason) noexcept;
inline void report(const char* call, const std::string& reason) noexcept { report(call, reason.c_str()); }

}  // namespace vel

#endif
