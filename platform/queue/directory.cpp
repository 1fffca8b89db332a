#include "platform/queue/directory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>

#include "frame/owned.h"
#include "platform/queue/identifier.h"
#include "platform/queue/report.h"

namespace vel {
namespace {

// Few enough to make at once, many enough that no directory grows large.
constexpr unsigned kShards = 64;
constexpr mode_t kDirectoryMode = 0770;

// The first bytes that file systems bear whose locks and shared memory reach over a network, or may: NFS, SMB, CIFS,
// SMB 2, NCP, AFS (both), Coda, Ceph, 9P, Lustre, GPFS, OCFS2, GFS2, FUSE.
constexpr std::array<uint32_t, 15> kNotLocal{0x6969,     0x517b,     0xff534d42, 0xfe534d42, 0x564c,
                                             0x5346414f, 0x6b414653, 0x73757245, 0x00c36400, 0x01021997,
                                             0x0bd00bd0, 0x47504653, 0x7461636f, 0x01161970, 0x65735546};

struct stat require_local_directory(const std::string& path) {
    if (path.empty()) throw QueueError("[Gateway] QueueDirectory is empty");
    if (path.front() != '/') throw QueueError("[Gateway] QueueDirectory is not absolute: " + path);
    struct stat status;
    if (::stat(path.c_str(), &status) != 0) throw QueueError::of_system("cannot use", path);
    if (!S_ISDIR(status.st_mode)) throw QueueError("[Gateway] QueueDirectory is no directory: " + path);
    if (!is_local(path)) throw QueueError("[Gateway] QueueDirectory is not on a local file system: " + path);
    return status;
}

void sync_directory(const std::string& path) {
    const Descriptor directory(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!directory || ::fsync(directory.get()) != 0) throw QueueError::of_system("cannot sync", path);
}

void make_directory(const std::string& path) {
    if (::mkdir(path.c_str(), kDirectoryMode) != 0 && errno != EEXIST) throw QueueError::of_system("cannot make", path);
}

struct Closed {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

void each_name(const std::string& path, const std::function<void(std::string_view)>& visit) {
    const std::unique_ptr<DIR, Closed> directory(::opendir(path.c_str()));
    if (!directory) throw QueueError::of_system("cannot list", path);
    for (;;) {
        errno = 0;
        const dirent* const found = ::readdir(directory.get());
        if (!found && errno != 0) throw QueueError::of_system("cannot list", path);
        if (!found) return;
        visit(found->d_name);
    }
}

bool is_gone(const std::string& path) { return ::unlink(path.c_str()) == 0 || errno == ENOENT; }

}  // namespace

Directory::Directory(std::string path) : path_(std::move(path)) {
    const struct stat status = require_local_directory(path_);
    device_ = status.st_dev;
    inode_ = status.st_ino;
    for (unsigned number = 0; number < kShards; ++number) make_directory(shard(number));
    make_directory(path_ + "/consumers");
    sync();
}

bool Directory::is_there() const {
    struct stat status;
    return ::stat(path_.c_str(), &status) == 0 && status.st_dev == device_ && status.st_ino == inode_;
}

void Directory::sync() const { sync_directory(path_); }

std::string Directory::shard(unsigned number) const {
    constexpr std::string_view hex = "0123456789abcdef";
    return path_ + '/' + hex[number / 16] + hex[number % 16];
}

std::string Directory::consumer(std::string_view identifier) const {
    return (path_ + "/consumers/").append(identifier);
}

std::string Directory::base(std::string_view identifier) const {
    return shard(shard_of(identifier, kShards)).append("/").append(identifier);
}

void Directory::sync_shard_of(std::string_view identifier) const {
    sync_directory(shard(shard_of(identifier, kShards)));
}

void Directory::each_file(std::string_view suffix, const std::function<void(const std::string&)>& visit) const {
    for (unsigned number = 0; number < kShards; ++number) {
        each_name(shard(number), [&](std::string_view name) {
            if (!name.ends_with(suffix)) return;
            name.remove_suffix(suffix.size());
            if (is_identifier(name) && shard_of(name, kShards) == number) visit(std::string(name));
        });
    }
}

void Directory::each_consumer(const std::function<void(const std::string&)>& visit) const {
    each_name(path_ + "/consumers", [&](std::string_view name) {
        if (is_identifier(name)) visit(std::string(name));
    });
}

uint64_t Directory::free_bytes() const {
    struct statvfs system;
    if (::statvfs(path_.c_str(), &system) != 0) throw QueueError::of_system("cannot use", path_);
    return uint64_t{system.f_bavail} * system.f_frsize;
}

bool is_local(const std::string& path) {
    struct statfs system;
    if (::statfs(path.c_str(), &system) != 0) throw QueueError::of_system("cannot use", path);
    return std::find(kNotLocal.begin(), kNotLocal.end(), static_cast<uint32_t>(system.f_type)) == kNotLocal.end();
}

bool remove_files(const std::string& base) noexcept {
    try {
        const bool unlocked = is_gone(base + std::string(kLockSuffix));
        return is_gone(base + std::string(kMessageSuffix)) && unlocked;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace vel
