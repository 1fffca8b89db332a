#include "tools/queue/retry_plan.h"

#include <algorithm>
#include <array>

#include "tools/io/exit_code.h"
#include "tools/text/ascii.h"
#include "tools/text/instant.h"
#include "vel/frame.h"

namespace vel::command {
namespace {

constexpr const char* kSection = "Queue";
constexpr const char* kRetryAfter = "RetryAfter";
constexpr const char* kLifetime = "Lifetime";
constexpr std::size_t kLongest = 1024;  // of a value: more than anybody writes

Failure wrong(const char* key, std::string_view value, const char* what) {
    std::string text = std::string("[").append(kSection).append("] ").append(key).append(": \"");
    return {Exit::config, text.append(value).append("\" is ").append(what)};
}

// A value that fills the buffer may have been cut, and is refused as one that is wrong.
std::string setting(const char* key, const char* fallback) {
    std::array<char, kLongest> value{};
    const int size = static_cast<int>(value.size());
    if (VELGetPrivateProfileString(kSection, key, fallback, value.data(), size, iniFileName) == size - 1)
        throw wrong(key, std::string_view(value.data(), 20), "too long");
    return value.data();
}

int64_t wait_of(std::string_view text) {
    const auto wait = read_duration(trimmed(text));
    if (!wait || *wait == 0) throw wrong(kRetryAfter, text, "no time to wait, such as 30s, 5m, 2h or 1d");
    return *wait;
}

}  // namespace

RetryPlan RetryPlan::from_settings() {
    return {setting(kRetryAfter, "5m, 15m, 30m, 1h, 2h, 4h"), setting(kLifetime, "5d")};
}

RetryPlan::RetryPlan(std::string_view retry_after, std::string_view lifetime) {
    for (;;) {
        const std::size_t comma = retry_after.find(',');
        waits_.push_back(wait_of(retry_after.substr(0, comma)));
        if (comma == std::string_view::npos) break;
        retry_after.remove_prefix(comma + 1);
    }
    const auto seconds = read_duration(trimmed(lifetime));
    if (!seconds) throw wrong(kLifetime, lifetime, "no length of time, such as 12h or 5d");
    lifetime_ = *seconds;
}

std::optional<int64_t> RetryPlan::due(int64_t arrival, int attempts, int64_t now) const {
    const auto last = static_cast<int>(waits_.size()) - 1;
    const int64_t due = now + waits_[static_cast<std::size_t>(std::clamp(attempts - 1, 0, last))];
    return due > arrival + lifetime_ ? std::nullopt : std::optional(due);
}

}  // namespace vel::command
