#include "platform/diamond/relation_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/failure.h"

namespace vel {
namespace {

constexpr mode_t kFileMode = 0660;

bool leads_to(const char* path, int fd) {
    struct stat named;
    struct stat open;
    return ::lstat(path, &named) == 0 && ::fstat(fd, &open) == 0 && named.st_dev == open.st_dev &&
           named.st_ino == open.st_ino;
}

// One that may not be written, or not be made because it is there, can be locked all the same.
Descriptor open_lock(const std::string& path) {
    constexpr int kHow = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | kHow, kFileMode));
    const int reason = errno;
    if (!file) file = Descriptor(::open(path.c_str(), O_RDONLY | kHow));
    errno = reason;
    if (!file) throw Failure::of_system("cannot open", path);
    return file;
}

void wait_for(int fd, const std::string& path) {
    while (::flock(fd, LOCK_EX) != 0) {
        if (errno != EINTR) throw Failure::of_system("cannot lock", path);
    }
}

}  // namespace

// A lock on a file that has lost its name meanwhile keeps nobody out.
RelationLock::RelationLock(const std::string& path) {
    do {
        file_ = open_lock(path);
        wait_for(file_.get(), path);
    } while (!leads_to(path.c_str(), file_.get()));
}

// It is given up even where the child of a fork has the descriptor, too.
RelationLock::~RelationLock() {
    if (!is_inherited()) ::flock(file_.get(), LOCK_UN);
}

bool RelationLock::is_inherited() const { return process_ != this_process(); }

}  // namespace vel
