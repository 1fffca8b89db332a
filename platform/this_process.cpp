#include "platform/this_process.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>

namespace vel {
namespace {

std::atomic<int> forks = 0;
const bool is_counted = ::pthread_atfork(nullptr, nullptr, [] { ++forks; }) == 0;

}  // namespace

int this_process() noexcept { return is_counted ? forks.load(std::memory_order_relaxed) : ::getpid(); }

}  // namespace vel
