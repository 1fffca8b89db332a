#include "tools/io/journal.h"

#include <array>
#include <exception>
#include <string_view>
#include <utility>

#include "vel/frame.h"
#include "vel/platform/config.h"
#include "vel/platform/log.h"

namespace vel::command {

Journal::Journal() { LogCaptureStart(&Journal::add, this); }

Journal::~Journal() { LogCaptureStop(); }

void Journal::share() {
    std::array<char, 8> target{};  // longer than "stderr", so that what is cut is something else
    VELGetPrivateProfileString("Log", "Target", "stderr", target.data(), static_cast<int>(target.size()), iniFileName);
    if (std::string_view(target.data()) != "stderr") LogWatchStart(&Journal::add, this);
}

std::vector<LogLine> Journal::take() { return std::exchange(lines_, {}); }

void Journal::add(void* self, int level, const char*, const char* text) noexcept {
    try {
        static_cast<Journal*>(self)->lines_.push_back({level, text});
    } catch (const std::exception&) {
        return;  // a line for which there is no memory is lost, the work goes on
    }
}

SettingInForce::SettingInForce(const char* section, const char* key, const char* value) : section_(section), key_(key) {
    if (value) ProfileOverlaySet(section, key, value);
}

SettingInForce::~SettingInForce() { ProfileOverlaySet(section_, key_, nullptr); }

}  // namespace vel::command
