// System calls that fail when a test wants them to: the program's own definitions stand before the C library's, for
// every library that it is linked with.
#ifndef VEL_TESTS_PLATFORM_QUEUE_FAULTS_H
#define VEL_TESTS_PLATFORM_QUEUE_FAULTS_H

namespace vel::test {

// Lets the calling thread's n-th call from now on fail with an error, counted from 1: open, write, pwrite, fsync,
// fdatasync, ftruncate, close, rename, unlink, mkdir. A close that fails has closed. Error 0: the write is cut short.
void fail_call(int n, int error);

// Back to normal; returns whether a call has failed.
bool end_of_faults();

}  // namespace vel::test

#endif
