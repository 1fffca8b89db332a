#include "platform/log/log_settings.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <system_error>

#include "frame/ascii.h"
#include "platform/config/ini_cache.h"
#include "platform/config/ini_path.h"

namespace vel {
namespace {

constexpr std::string_view kBetweenLevels = ", \t";

// The next number of a list; steps over words that are none.
std::optional<int> take_number(std::string_view& list) {
    while (!list.empty()) {
        list.remove_prefix(std::min(list.find_first_not_of(kBetweenLevels), list.size()));
        const auto word = list.substr(0, list.find_first_of(kBetweenLevels));
        list.remove_prefix(word.size());
        int number;
        const auto end = word.data() + word.size();
        if (const auto [stop, error] = std::from_chars(word.data(), end, number); error == std::errc() && stop == end) {
            return number;
        }
    }
    return std::nullopt;
}

}  // namespace

LogSettings::LogSettings() : ini_(current_ini(IniPath(kIniName).c_str())) {}

std::string_view LogSettings::text(std::string_view key, std::string_view fallback) const {
    const auto value = ini_ ? ini_->find("Log", key) : std::nullopt;
    return value && !value->empty() ? *value : fallback;
}

bool LogSettings::wants(int level) const {
    auto list = text("Levels", "all");
    auto number = take_number(list);
    if (!number) return true;
    while (number && *number != level) number = take_number(list);
    return number.has_value();
}

}  // namespace vel
