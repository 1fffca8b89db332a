#include "tools/text/instant.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>

namespace vel::command {
namespace {

struct Unit {
    char name;
    int64_t seconds;
};

constexpr std::array kUnits{Unit{'d', 86400}, Unit{'h', 3600}, Unit{'m', 60}, Unit{'s', 1}};
constexpr int64_t kLongest = int64_t{36500} * 86400;

std::string counted(int64_t count, char unit) { return std::to_string(count) + unit; }

}  // namespace

std::string instant_text(int64_t seconds) {
    const std::chrono::sys_seconds instant{std::chrono::seconds(seconds)};
    const auto midnight = std::chrono::floor<std::chrono::days>(instant);
    const std::chrono::year_month_day date(midnight);
    const std::chrono::hh_mm_ss clock(instant - midnight);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text.data();
}

std::optional<int64_t> read_duration(std::string_view text) {
    if (text.empty()) return std::nullopt;
    const auto unit = std::find_if(kUnits.begin(), kUnits.end(), [&](const Unit& u) { return u.name == text.back(); });
    text.remove_suffix(1);
    uint32_t count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (unit == kUnits.end() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    const int64_t seconds = count * unit->seconds;
    return seconds > kLongest ? std::nullopt : std::optional(seconds);
}

std::string duration_text(int64_t seconds) {
    for (std::size_t i = 0; i + 1 < kUnits.size(); ++i) {
        const auto& [name, length] = kUnits[i];
        if (seconds < length) continue;
        const auto& [next_name, next_length] = kUnits[i + 1];
        const int64_t rest = seconds % length / next_length;
        const bool has_rest = rest != 0 && next_name != 's';
        return counted(seconds / length, name) + (has_rest ? counted(rest, next_name) : "");
    }
    return counted(std::max<int64_t>(seconds, 0), 's');
}

}  // namespace vel::command
