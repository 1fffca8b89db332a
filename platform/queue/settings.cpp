#include "platform/queue/settings.h"

#include <array>
#include <charconv>
#include <string_view>
#include <system_error>

#include "vel/platform/config.h"

namespace vel {
namespace {

constexpr const char* kIniName = "ostra.ini";

// As much as libvel reads of a directory.
constexpr std::size_t kPathSize = 4095;

constexpr uint64_t kMiB = 1024 * 1024;
constexpr uint32_t kMinimumFree = 16;

}  // namespace

std::string queue_directory() {
    std::array<char, kPathSize> value{};
    GetPrivateProfileString("Gateway", "QueueDirectory", "", value.data(), static_cast<int>(value.size()), kIniName);
    std::string path = value.data();
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

uint64_t minimum_free() {
    std::array<char, 32> value{};
    GetPrivateProfileString("Queue", "MinimumFree", "", value.data(), static_cast<int>(value.size()), kIniName);
    const std::string_view text = value.data();
    uint32_t mib = kMinimumFree;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), mib);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return (whole ? mib : kMinimumFree) * kMiB;
}

}  // namespace vel
