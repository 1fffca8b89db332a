#include "platform/config/profile_store.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

#include "frame/owned.h"
#include "platform/config/ini_cache.h"
#include "platform/whole_file.h"

namespace vel {
namespace {

constexpr mode_t kPrivate = 0600;    // until the old file's mode is set
constexpr mode_t kAnyMode = 0666;    // less the process's mask
constexpr mode_t kModeBits = 07777;  // what chmod sets

// The file behind symbolic links; the path itself when nothing is there.
std::string resolved(const char* path) {
    const COwned<char> real(::realpath(path, nullptr));
    return real ? real.get() : path;
}

std::string directory_of(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == path.npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Holds the lock that all writers of a file take, until it is closed.
Descriptor lock_for(const std::string& path) {
    const std::string name = path + ".lock";
    Descriptor lock(::open(name.c_str(), O_RDONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kAnyMode));
    if (!lock) return lock;
    int result;
    do {
        result = ::flock(lock.get(), LOCK_EX);
    } while (result != 0 && errno == EINTR);
    return result == 0 ? std::move(lock) : Descriptor();
}

struct OldFile {
    std::optional<struct stat> status;  // nothing for a file that is missing
    std::string text;
};

// Nothing when the file is there but cannot be read: its other lines would be lost.
std::optional<OldFile> read_old(const std::string& path) {
    OldFile old;
    struct stat status;
    if (::stat(path.c_str(), &status) != 0) return errno == ENOENT ? std::optional(old) : std::nullopt;
    const Descriptor file = open_regular(path.c_str());
    if (!file || ::fstat(file.get(), &status) != 0) return std::nullopt;
    auto text = read_whole(file.get(), kIniMax);
    if (!text) return std::nullopt;
    return OldFile{status, *std::move(text)};
}

// A group that cannot be kept does not hand its rights to another one.
bool take_over_rights(int fd, const struct stat& old) {
    constexpr uid_t kSameOwner = static_cast<uid_t>(-1);
    mode_t mode = old.st_mode & kModeBits;
    const bool kept = ::fchown(fd, old.st_uid, old.st_gid) == 0 || ::fchown(fd, kSameOwner, old.st_gid) == 0;
    if (!kept) mode &= ~static_cast<mode_t>(S_IRWXG);
    return ::fchmod(fd, mode) == 0;
}

bool fill(int fd, const OldFile& old, std::string_view text) {
    return (!old.status || take_over_rights(fd, *old.status)) && write_whole(fd, text) && ::fsync(fd) == 0;
}

// The new name is on disk only when its directory is. Some file systems cannot and say EINVAL.
bool sync_directory(const std::string& path) {
    const Descriptor directory(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return directory && (::fsync(directory.get()) == 0 || errno == EINVAL);
}

// The name is fixed, since the lock admits one writer: what a crash left behind goes first.
bool replace(const std::string& path, const OldFile& old, std::string_view text) {
    const std::string name = path + ".new";
    ::unlink(name.c_str());
    const mode_t mode = old.status ? kPrivate : kAnyMode;
    Descriptor file(::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!file) return false;
    const bool filled = fill(file.get(), old, text) && ::close(file.release()) == 0;
    if (filled && std::rename(name.c_str(), path.c_str()) == 0) return sync_directory(directory_of(path));
    ::unlink(name.c_str());
    return false;
}

}  // namespace

bool rewrite_file(const char* path, const std::function<std::string(std::string_view)>& edit) {
    if (!*path) return false;
    const std::string real = resolved(path);
    const Descriptor lock = lock_for(real);
    if (!lock) return false;
    const auto old = read_old(real);
    if (!old) return false;
    const std::string text = edit(old->text);
    if (text == old->text) return true;
    return text.size() <= kIniMax && replace(real, *old, text);
}

}  // namespace vel
