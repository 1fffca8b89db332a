#include "tools/io/place_new.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>

#include "tools/io/descriptor.h"

namespace vel::command {
namespace {

constexpr mode_t kPrivate = 0600;

}  // namespace

bool place_new(const char* file, const char* path) {
    if (::renameat2(AT_FDCWD, file, AT_FDCWD, path, RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    // A file system that cannot: the name is taken first, with an empty file.
    if (!Descriptor(::open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kPrivate))) return false;
    if (std::rename(file, path) == 0) return true;
    const int error = errno;
    std::remove(path);
    errno = error;
    return false;
}

}  // namespace vel::command
