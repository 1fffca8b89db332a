#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "frame/at_boundary.h"
#include "platform/config/ini_cache.h"
#include "platform/config/ini_path.h"
#include "platform/config/overlay.h"
#include "platform/config/profile_edit.h"
#include "platform/config/profile_store.h"
#include "platform/keep_errno.h"
#include "vel/platform/config.h"

namespace {

constexpr int kMissing = -1;

struct Buffer {
    char* bytes;
    int size;
};

// Cuts the text to what fits. The fallback may stand in the buffer itself.
int store(std::string_view text, Buffer buffer) {
    const auto length = std::min(text.size(), static_cast<std::size_t>(buffer.size) - 1);
    if (length > 0) std::memmove(buffer.bytes, text.data(), length);
    buffer.bytes[length] = '\0';
    return static_cast<int>(length);
}

int store_setting(const char* section, const char* key, const char* file, Buffer buffer) {
    if (const auto* value = vel::overlaid(section, key)) return store(*value, buffer);
    const auto ini = vel::current_ini(vel::IniPath(file).c_str());
    if (!ini) return kMissing;
    const auto value = ini->find(section, key);
    return value ? store(*value, buffer) : kMissing;
}

int write_setting(vel::SettingName name, const char* value, const char* file) {
    if (!vel::is_writable(name, value ? value : "")) return 0;
    return vel::rewrite_file(vel::IniPath(file).c_str(), [=](std::string_view text) {
        return value ? vel::with_setting(text, name, value) : vel::without_setting(text, name);
    });
}

}  // namespace

extern "C" {

int GetPrivateProfileString(const char* section, const char* key, const char* fallback, char* buffer, int size,
                            const char* file) {
    if (!buffer || size < 1) return 0;
    const vel::KeepErrno errno_kept;
    const Buffer target{buffer, size};
    const int stored = !section || !key || !file
                           ? kMissing
                           : vel::at_boundary(kMissing, [&] { return store_setting(section, key, file, target); });
    return stored != kMissing ? stored : store(fallback ? fallback : "", target);
}

int WritePrivateProfileString(const char* section, const char* key, const char* value, const char* file) {
    if (!section || !key || !file || !*file) return 0;
    return vel::at_boundary(0, [&] { return write_setting({section, key}, value, file); });
}

int ProfileOverlaySet(const char* section, const char* key, const char* value) {
    if (!section || !key) return 0;
    return vel::at_boundary(0, [&] {
        value ? vel::lay_over(section, key, value) : vel::take_away(section, key);
        return 1;
    });
}

void ProfileOverlayClear(void) { vel::take_all_away(); }

}  // extern "C"
