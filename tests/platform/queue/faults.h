// System calls that fail when a test wants them to: the program's own definitions stand before the C library's, for
// every library that it is linked with.
#ifndef VEL_TESTS_PLATFORM_QUEUE_FAULTS_H
#define VEL_TESTS_PLATFORM_QUEUE_FAULTS_H

#include <cerrno>
#include <cstdint>

namespace vel::test {

// Instead of an error: writes are cut short; requests for memory, which are the calls then, are refused.
inline constexpr int kShortWrite = 0;
inline constexpr int kNoMemory = ENOMEM;

// Lets the calling thread's n-th call from now on fail with an error, counted from 1, and if wanted all that follow:
// open, write, pwrite, fsync, fdatasync, ftruncate, close, rename, unlink, mkdir, lstat. A close that fails has closed.
void fail_call(int n, int error, bool and_all_later);

// Back to normal; returns whether a call has failed.
bool end_of_faults();

// What statfs says of every file system from now on; 0: the truth.
void pretend_file_system(uint32_t type);

}  // namespace vel::test

#endif
