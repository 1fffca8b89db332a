#include "platform/config/held_file.h"

#include <fcntl.h>
#include <time.h>

namespace vel {
namespace {

// Low numbers are left to the program, which may count on getting 0, 1 or 2, or use those that it closed.
constexpr int kLowestNumber = 200;

// The kernel's own clock, which moves in steps; reading it is no system call.
int64_t step_of_clock() {
    timespec now;
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return nanoseconds(now);
}

}  // namespace

HeldFile::HeldFile(int fd, const FileStamp& stamp) : fd_(::fcntl(fd, F_DUPFD_CLOEXEC, kLowestNumber)), stamp_(stamp) {}

// A program may close descriptors that it did not open, daemons do; another file may have the number by now.
HeldFile::~HeldFile() {
    const auto there = stamp_of(fd_);
    if (there && there->device == stamp_.device && there->inode == stamp_.inode) ::close(fd_);
}

bool HeldFile::stands_at(const char* path) {
    if (stamp_of(fd_) != stamp_) return false;
    const int64_t now = step_of_clock();
    const bool absolute = *path == '/';
    if (absolute && walked_at_.load(std::memory_order_relaxed) == now) return true;
    if (stamp_of(path) != stamp_) return false;
    walked_at_.store(now, std::memory_order_relaxed);
    return true;
}

}  // namespace vel
