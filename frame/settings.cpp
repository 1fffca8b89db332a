// The profile calls: settings as the caller's INI_MODE has them.
#include "frame/settings.h"

#include <cstdio>
#include <cstdlib>

extern "C" {
int32_t INI_MODE = 0;
}

namespace {

// The configuration interface is served by the INI file too; it stays a mode of its own.
constexpr int32_t kIniFile = 0;
constexpr int32_t kConfigInterface = 1;

constexpr int kNumberSize = 64;

bool mode_is_known() { return INI_MODE == kIniFile || INI_MODE == kConfigInterface; }

}  // namespace

extern "C" {

int VELGetPrivateProfileString(const char* section, const char* key, const char* fallback, char* buffer, int size,
                               const char* file) {
    return mode_is_known() ? VELGetPrivateProfileStringOld(section, key, fallback, buffer, size, file) : 0;
}

int VELGetPrivateProfileInt(const char* section, const char* key, int fallback, const char* file) {
    return mode_is_known() ? VELGetPrivateProfileIntOld(section, key, fallback, file) : 0;
}

int VELWritePrivateProfileString(const char* section, const char* key, const char* value, const char* file) {
    return mode_is_known() ? VELWritePrivateProfileStringOld(section, key, value, file) : 0;
}

int VELGetPrivateProfileStringOld(const char* section, const char* key, const char* fallback, char* buffer, int size,
                                  const char* file) {
    return GetPrivateProfileString(section, key, fallback, buffer, size, file);
}

int VELGetPrivateProfileIntOld(const char* section, const char* key, int fallback, const char* file) {
    char fallback_text[kNumberSize];
    std::snprintf(fallback_text, sizeof fallback_text, "%ld", static_cast<long>(fallback));
    char text[kNumberSize] = {};
    GetPrivateProfileString(section, key, fallback_text, text, sizeof text, file);
    return static_cast<int>(std::atol(text));
}

int VELWritePrivateProfileStringOld(const char* section, const char* key, const char* value, const char* file) {
    return WritePrivateProfileString(section, key, value, file);
}

void UseINI(void) { INI_MODE = kIniFile; }
void UseConfigAPI(void) { INI_MODE = kConfigInterface; }

}  // extern "C"
