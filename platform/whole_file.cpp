#include "platform/whole_file.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

namespace vel {
namespace {

// Grows the buffer where a file's size is not known or not true.
constexpr std::size_t kStep = 16 * 1024;

std::optional<FileStamp> if_regular(int result, const struct stat& status) {
    if (result != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return FileStamp(status);
}

}  // namespace

int64_t nanoseconds(const timespec& time) { return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec; }

FileStamp::FileStamp(const struct stat& status)
    : device(status.st_dev),
      inode(status.st_ino),
      size(status.st_size),
      modified(nanoseconds(status.st_mtim)),
      changed(nanoseconds(status.st_ctim)) {}

std::optional<FileStamp> stamp_of(const char* path) {
    struct stat status;
    return if_regular(::stat(path, &status), status);
}

std::optional<FileStamp> stamp_of(int fd) {
    struct stat status;
    return if_regular(::fstat(fd, &status), status);
}

Descriptor open_regular(const char* path) {
    Descriptor file(::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (file && !stamp_of(file.get())) return Descriptor();
    return file;
}

std::optional<std::string> read_whole(int fd, std::size_t limit) {
    std::string bytes;
    std::size_t used = 0;
    if (const auto stamp = stamp_of(fd)) {
        if (stamp->size > static_cast<off_t>(limit)) return std::nullopt;
        bytes.resize(static_cast<std::size_t>(stamp->size) + 1);
    }
    for (;;) {
        if (used == bytes.size()) bytes.resize(used + std::max(used, kStep));
        const ssize_t got = ::read(fd, bytes.data() + used, bytes.size() - used);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return std::nullopt;
        used += static_cast<std::size_t>(got);
        if (used > limit) return std::nullopt;
        if (got == 0) break;
    }
    bytes.resize(used);
    return bytes;
}

bool write_whole(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t put = ::write(fd, bytes.data(), bytes.size());
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(put));
    }
    return true;
}

}  // namespace vel
