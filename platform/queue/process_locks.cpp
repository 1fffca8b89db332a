#include "platform/queue/process_locks.h"

#include <pthread.h>

namespace vel {
namespace {

std::mutex driver_mutex;
std::mutex pending_mutex;
std::mutex registry_mutex;

void take_all() {
    driver_mutex.lock();
    pending_mutex.lock();
    registry_mutex.lock();
}

void free_all() {
    registry_mutex.unlock();
    pending_mutex.unlock();
    driver_mutex.unlock();
}

}  // namespace

std::mutex& driver_lock() { return driver_mutex; }
std::mutex& pending_lock() { return pending_mutex; }
std::mutex& registry_lock() { return registry_mutex; }

void guard_locks_at_fork() {
    static const int registered = ::pthread_atfork(take_all, free_all, free_all);
    static_cast<void>(registered);
}

}  // namespace vel
