#include "tests/platform/queue/faults.h"

#include <dlfcn.h>
#include <sys/types.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "tests/support/memory.h"

namespace vel::test {
namespace {

thread_local int calls_left = 0;  // 0: no fault is wanted
thread_local int wanted_error = 0;
thread_local bool ever_after = false;
thread_local bool has_failed = false;
thread_local uint32_t pretended_type = 0;

// Whether this is the call that is to fail; errno is set then.
bool fails(bool writes = false) {
    if (calls_left == 0 || (wanted_error == kShortWrite && !writes) || --calls_left != 0) return false;
    if (ever_after) calls_left = 1;
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
    return wanted_error != kShortWrite ? -1
                                       : real<ssize_t>(name, fd, bytes, std::max<std::size_t>(size / 2, 1), place...);
}

}  // namespace

void fail_call(int n, int error, bool and_all_later) {
    if (error == kNoMemory) {
        memory = {static_cast<std::size_t>(n - 1), and_all_later ? kEveryRequest : 1, false};
        return;
    }
    calls_left = n;
    wanted_error = error;
    ever_after = and_all_later;
}

bool end_of_faults() {
    calls_left = 0;
    const bool starved = std::exchange(memory, Memory()).has_failed;
    return std::exchange(has_failed, false) || starved;
}

void pretend_file_system(uint32_t type) { pretended_type = type; }

// Each under the name that callers know it by.
#pragma GCC visibility push(default)
int open_narrow(const char* path, int flags, mode_t mode) __asm__("open");  // the mode is there or not
int open_wide(const char* path, int flags, mode_t mode) __asm__("open64");
ssize_t write_next(int fd, const void* bytes, std::size_t size) __asm__("write");
ssize_t write_at(int fd, const void* bytes, std::size_t size, off64_t at) __asm__("pwrite64");
int sync_file(int fd) __asm__("fsync");
int sync_data(int fd) __asm__("fdatasync");
int cut_file(int fd, off64_t size) __asm__("ftruncate64");
int rename_file(const char* from, const char* to) __asm__("rename");
int unlink_file(const char* path) __asm__("unlink");
int make_directory(const char* path, mode_t mode) __asm__("mkdir");
int close_file(int fd) __asm__("close");
#ifdef __i386__
int look_at(const char* path, void* status) __asm__("__lstat64_time64");
constexpr const char* kLookAt = "__lstat64_time64";
#else
int look_at(const char* path, void* status) __asm__("lstat64");
constexpr const char* kLookAt = "lstat64";
#endif
int ask_system(const char* path, struct statfs64* system) __asm__("statfs64");
#pragma GCC visibility pop

int open_narrow(const char* path, int flags, mode_t mode) { return faulty("open", path, flags, mode); }
int open_wide(const char* path, int flags, mode_t mode) { return faulty("open64", path, flags, mode); }
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
int look_at(const char* path, void* status) { return faulty(kLookAt, path, status); }

int ask_system(const char* path, struct statfs64* system) {
    const int result = real<int>("statfs64", path, system);
    if (pretended_type != 0) system->f_type = static_cast<decltype(system->f_type)>(pretended_type);
    return result;
}

int close_file(int fd) {
    const bool failed = fails();
    const int error = errno;
    const int result = real<int>("close", fd);
    if (failed) errno = error;
    return failed ? -1 : result;
}

}  // namespace vel::test
