// Changing one setting in the text of a configuration file. Every other byte stays.
#ifndef VEL_PLATFORM_CONFIG_PROFILE_EDIT_H
#define VEL_PLATFORM_CONFIG_PROFILE_EDIT_H

#include <string>
#include <string_view>

namespace vel {

struct SettingName {
    std::string_view section;
    std::string_view key;
};

// Whether a setting of this name and value, once written, is what the reader finds.
bool is_writable(SettingName name, std::string_view value);

// The text with the setting's value replaced where the reader finds it; else with the setting behind
// the last one of its section; else with a new section at the end.
std::string with_setting(std::string_view text, SettingName name, std::string_view value);

// The text without any setting of this name, so that none behind the first comes to light.
std::string without_setting(std::string_view text, SettingName name);

}  // namespace vel

#endif
