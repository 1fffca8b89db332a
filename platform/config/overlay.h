// Settings that a thread lays over all files, for itself alone.
#ifndef VEL_PLATFORM_CONFIG_OVERLAY_H
#define VEL_PLATFORM_CONFIG_OVERLAY_H

#include <string>
#include <string_view>

namespace vel {

// The calling thread's own value, or null. It lives until the thread changes its overlay.
const std::string* overlaid(std::string_view section, std::string_view key);

void lay_over(std::string_view section, std::string_view key, std::string_view value);
void take_away(std::string_view section, std::string_view key);
void take_all_away();

}  // namespace vel

#endif
