#include "platform/diamond/report.h"

#include <array>
#include <cstdio>

#include "platform/keep_errno.h"
#include "vel/platform/log.h"

namespace vel {
namespace {

constexpr int kLogError = 1;
constexpr const char* kApplicationName = "Diamond";

// Room for the longest path in a reason; what is longer is cut.
constexpr std::size_t kLongestLine = 4608;

}  // namespace

void report(const char* call, const char* reason) noexcept {
    const KeepErrno keep;
    std::array<char, kLongestLine> line;
    std::snprintf(line.data(), line.size(), "%s: %s.", call, reason);
    LogMessage(kLogError, kApplicationName, line.data());
}

}  // namespace vel
