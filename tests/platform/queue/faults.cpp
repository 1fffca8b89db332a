#include "tests/platform/queue/faults.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstddef>

namespace vel::test {
namespace {

thread_local int calls_left = 0;  // 0: no fault is wanted
thread_local int wanted_error = 0;
thread_local bool has_failed = false;

// Whether this is the call that is to fail; errno is set then.
bool fails(bool writes = false) {
    if (calls_left == 0 || (wanted_error == 0 && !writes) || --calls_left != 0) return false;
    has_failed = true;
    errno = wanted_error;
    return true;
}

template <class Result, class... Arguments>
Result real(const char* name, Arguments... arguments) {
    return reinterpret_cast<Result (*)(Arguments...)>(::dlsym(RTLD_NEXT, name))(arguments...);
}

template <class... Arguments>
int faulty(const char* name, Arguments... arguments) {
    return fails() ? -1 : real<int>(name, arguments...);
}

template <class... Place>
ssize_t faulty_write(const char* name, int fd, const void* bytes, std::size_t size, Place... place) {
    if (!fails(true)) return real<ssize_t>(name, fd, bytes, size, place...);
    return wanted_error ? -1 : real<ssize_t>(name, fd, bytes, std::max<std::size_t>(size / 2, 1), place...);
}

mode_t mode_of(int flags, std::va_list arguments) { return flags & O_CREAT ? va_arg(arguments, mode_t) : 0; }

}  // namespace

void fail_call(int n, int error) {
    calls_left = n;
    wanted_error = error;
    has_failed = false;
}

bool end_of_faults() {
    calls_left = 0;
    return has_failed;
}

// Each under the name that callers know it by.
#pragma GCC visibility push(default)
int open_narrow(const char* path, int flags, ...) __asm__("open");
int open_wide(const char* path, int flags, ...) __asm__("open64");
ssize_t write_next(int fd, const void* bytes, std::size_t size) __asm__("write");
ssize_t write_at(int fd, const void* bytes, std::size_t size, off64_t at) __asm__("pwrite64");
int sync_file(int fd) __asm__("fsync");
int sync_data(int fd) __asm__("fdatasync");
int cut_file(int fd, off64_t size) __asm__("ftruncate64");
int rename_file(const char* from, const char* to) __asm__("rename");
int unlink_file(const char* path) __asm__("unlink");
int make_directory(const char* path, mode_t mode) __asm__("mkdir");
int close_file(int fd) __asm__("close");
#pragma GCC visibility pop

int open_narrow(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_of(flags, arguments);
    va_end(arguments);
    return faulty("open", path, flags, mode);
}

int open_wide(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_of(flags, arguments);
    va_end(arguments);
    return faulty("open64", path, flags, mode);
}

ssize_t write_next(int fd, const void* bytes, std::size_t size) { return faulty_write("write", fd, bytes, size); }

ssize_t write_at(int fd, const void* bytes, std::size_t size, off64_t at) {
    return faulty_write("pwrite64", fd, bytes, size, at);
}

int sync_file(int fd) { return faulty("fsync", fd); }
int sync_data(int fd) { return faulty("fdatasync", fd); }
int cut_file(int fd, off64_t size) { return faulty("ftruncate64", fd, size); }
int rename_file(const char* from, const char* to) { return faulty("rename", from, to); }
int unlink_file(const char* path) { return faulty("unlink", path); }
int make_directory(const char* path, mode_t mode) { return faulty("mkdir", path, mode); }

int close_file(int fd) {
    const bool failed = fails();
    const int error = errno;
    const int result = real<int>("close", fd);
    if (failed) errno = error;
    return failed ? -1 : result;
}

}  // namespace vel::test
