#include "platform/queue/owned_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/queue/identifier.h"
#include "platform/queue/report.h"

namespace vel {
namespace {

constexpr mode_t kFileMode = 0660;

// A new identifier is taken already, or its file taken for a dead one's, about never.
constexpr int kAttempts = 10;

// A lock on a file that has lost its name meanwhile says nothing about the one that has the name now.
bool lock(const std::string& path, int fd) { return ::flock(fd, LOCK_EX | LOCK_NB) == 0 && leads_to(path, fd); }

// Nothing when the name is taken, or somebody took the file for a dead one's in between.
Descriptor make_and_lock(const std::string& path) {
    Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode));
    if (!file && errno != EEXIST) throw QueueError::of_system("cannot make", path);
    if (!file || lock(path, file.get())) return file;
    if (errno != EWOULDBLOCK) ::unlink(path.c_str());  // Nobody else has it: no locks are to be had here.
    return Descriptor();
}

}  // namespace

bool leads_to(const std::string& path, int fd) {
    struct stat named;
    struct stat open;
    return ::lstat(path.c_str(), &named) == 0 && ::fstat(fd, &open) == 0 && named.st_dev == open.st_dev &&
           named.st_ino == open.st_ino;
}

OwnedFile make_owned(const std::function<std::string(const std::string& id)>& path_of) {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        std::string id = new_identifier();
        std::string path = path_of(id);
        Descriptor lock = make_and_lock(path);
        if (lock) return {std::move(id), std::move(path), std::move(lock)};
    }
    throw QueueError("no new file of the queue can be made and locked");
}

Descriptor take_ownerless(const std::string& path) {
    Descriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (file && !lock(path, file.get())) return Descriptor();
    return file;
}

}  // namespace vel
