#include "platform/queue/report.h"

#include <array>
#include <cstdio>
#include <mutex>

#include "platform/keep_errno.h"
#include "platform/queue/process_locks.h"
#include "vel/platform/log.h"

namespace vel {
namespace {

constexpr int kLogError = 1;
constexpr int kLogAccounting = 3;

// Room for the longest path in a reason; what is longer is cut.
constexpr std::size_t kLongestLine = 4608;
Module module_name{};

}  // namespace

void set_module(const char* name) {
    const std::lock_guard lock(registry_lock());
    std::snprintf(module_name.data(), module_name.size(), "%s", name ? name : "");
}

Module module() {
    const std::lock_guard lock(registry_lock());
    return module_name;
}

void report_failure(const char* call, const char* reason) noexcept {
    const KeepErrno keep;
    std::array<char, kLongestLine> line;
    std::snprintf(line.data(), line.size(), "%s: %s.", call, reason);
    LogMessage(kLogError, module().data(), line.data());
}

void account(const std::string& text) {
    const KeepErrno keep;
    LogMessage(kLogAccounting, module().data(), text.c_str());
}

}  // namespace vel
