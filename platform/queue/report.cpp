#include "platform/queue/report.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <system_error>

#include "platform/keep_errno.h"
#include "platform/queue/process_locks.h"
#include "vel/platform/log.h"

namespace vel {
namespace {

constexpr int kLogError = 1;
constexpr int kLogAccounting = 3;

// Room for the longest path in a reason; what is longer is cut.
constexpr std::size_t kLongestLine = 4608;
// As libvel keeps of a module's name.
constexpr std::size_t kLongestModule = 32;

std::array<char, kLongestModule> module_name{};

std::array<char, kLongestModule> copy_of_module() {
    const std::lock_guard lock(registry_lock());
    return module_name;
}

}  // namespace

QueueError QueueError::of_system(const std::string& tried, const std::string& path) {
    return QueueError(tried + " " + path + ": " + std::generic_category().message(errno));
}

void set_module(const char* name) {
    const std::lock_guard lock(registry_lock());
    std::snprintf(module_name.data(), module_name.size(), "%s", name ? name : "");
}

std::string module() { return copy_of_module().data(); }

void report_failure(const char* call, const char* reason) noexcept {
    const KeepErrno keep;
    std::array<char, kLongestLine> line;
    std::snprintf(line.data(), line.size(), "%s: %s.", call, reason);
    LogMessage(kLogError, copy_of_module().data(), line.data());
}

void account(const std::string& text) {
    const KeepErrno keep;
    LogMessage(kLogAccounting, copy_of_module().data(), text.c_str());
}

}  // namespace vel
