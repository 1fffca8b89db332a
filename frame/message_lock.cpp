// Message locks: the file "<message>.lck" beside a message.
//
// Kept: they do not exclude one another; a second lock succeeds and islocked answers 0.
#include <cstdio>
#include <string>

#include "frame/access.h"
#include "frame/at_boundary.h"
#include "frame/log.h"
#include "frame/settings.h"

namespace vel {
namespace {

constexpr Setting<256> kLogLocking{"Debug", "LogLocking", "NO"};

std::string lock_file_of(const char* path) { return std::string(path) + ".lck"; }

bool logs_locking() { return is(read(kLogLocking), "YES"); }

int lock_message(const char* path) {
    const bool logging = logs_locking();
    const int handle = CreateFile(lock_file_of(path).c_str(), kForWriting);
    if (handle == -1) return -1;
    CloseHandle(handle);
    if (logging) log_line(kLogNotice, "lock: %s", path);
    return 0;
}

int unlock_message(const char* path) {
    const std::string lock_file = lock_file_of(path);
    if (logs_locking()) log_line(kLogNotice, "unlock: %s", path);
    return std::remove(lock_file.c_str()) == 0 ? 0 : -1;
}

}  // namespace
}  // namespace vel

extern "C" {

int lockmsg(const char* path) {
    return path ? vel::at_boundary(-1, [=] { return vel::lock_message(path); }) : -1;
}

int unlockmsg(const char* path) {
    return path ? vel::at_boundary(-1, [=] { return vel::unlock_message(path); }) : -1;
}

int islocked(const char*) { return 0; }

}  // extern "C"
