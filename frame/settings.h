// Settings, each one constant at the place that reads it, read afresh at each call.
#ifndef VEL_FRAME_SETTINGS_H
#define VEL_FRAME_SETTINGS_H

#include <array>
#include <cstddef>
#include <string_view>

#include "frame/ascii.h"
#include "vel/frame.h"
#include "vel/platform/config.h"

namespace vel {

// Size is that of the buffer, so a value has at most Size - 1 bytes.
template <std::size_t Size>
struct Setting {
    const char* section;
    const char* key;
    const char* fallback;
};

template <std::size_t Size>
using SettingText = std::array<char, Size>;

// Reads a setting through the profile calls, which obey INI_MODE.
template <std::size_t Size>
SettingText<Size> read(const Setting<Size>& setting, const char* file = iniFileName) {
    SettingText<Size> text;
    text.front() = text.back() = '\0';
    VELGetPrivateProfileString(setting.section, setting.key, setting.fallback, text.data(), int{Size}, file);
    return text;
}

// Reads a setting from the profile reader itself, whatever INI_MODE says.
template <std::size_t Size>
SettingText<Size> read_directly(const Setting<Size>& setting) {
    SettingText<Size> text;
    text.front() = text.back() = '\0';
    GetPrivateProfileString(setting.section, setting.key, setting.fallback, text.data(), int{Size}, iniFileName);
    return text;
}

template <std::size_t Size>
bool is(const SettingText<Size>& text, std::string_view wanted) {
    return ascii::equals_ignoring_case(text.data(), wanted);
}

}  // namespace vel

#endif
