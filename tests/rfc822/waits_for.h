// Shows that a call holds a lock: it waits while somebody else does.
#ifndef VEL_TESTS_RFC822_WAITS_FOR_H
#define VEL_TESTS_RFC822_WAITS_FOR_H

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "rfc822/parser_locks.h"

namespace vel::test {

// The other thread says that it runs, so that a late start is not taken for waiting.
template <class Call>
void expect_waits_for(CRITICAL_SECTION& lock, Call call) {
    std::atomic<bool> started{false};
    std::atomic<bool> done{false};
    EnterCriticalSection(&lock);
    std::thread other([&] {
        started = true;
        started.notify_one();
        call();
        done = true;
    });
    started.wait(false);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(done) << "the lock is held";
    LeaveCriticalSection(&lock);
    other.join();
}

}  // namespace vel::test

#endif
