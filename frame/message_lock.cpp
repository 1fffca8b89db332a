// Message locks: the file "<message>.lck" beside a message.
//
// Kept: they do not exclude one another; a second lock succeeds and islocked answers 0.
#include <array>
#include <climits>
#include <cstdio>

#include "frame/access.h"
#include "frame/log.h"
#include "frame/settings.h"

namespace vel {
namespace {

constexpr Setting<256> kLogLocking{"Debug", "LogLocking", "NO"};

using LockFile = std::array<char, PATH_MAX>;

// Empty when no file has so long a path. A lock is given up without asking for memory.
LockFile lock_file_of(const char* path) {
    LockFile file;
    const int length = std::snprintf(file.data(), file.size(), "%s.lck", path);
    if (length < 0 || static_cast<std::size_t>(length) >= file.size()) file.front() = '\0';
    return file;
}

bool logs_locking() { return is(read(kLogLocking), "YES"); }

int lock_message(const char* path) {
    const bool logging = logs_locking();
    const int handle = CreateFile(lock_file_of(path).data(), kForWriting);
    if (handle == -1) return -1;
    CloseHandle(handle);
    if (logging) log_line(kLogNotice, "lock: %s", path);
    return 0;
}

int unlock_message(const char* path) {
    const LockFile lock_file = lock_file_of(path);
    if (logs_locking()) log_line(kLogNotice, "unlock: %s", path);
    return std::remove(lock_file.data()) == 0 ? 0 : -1;
}

}  // namespace
}  // namespace vel

extern "C" {

int lockmsg(const char* path) { return path ? vel::lock_message(path) : -1; }

int unlockmsg(const char* path) { return path ? vel::unlock_message(path) : -1; }

int islocked(const char*) { return 0; }

}  // extern "C"
