// The queue's place on disk:
//   queue.db           envelopes, recipients, states and due times
//   00 ... 3f/         message files, "<identifier>.msg", and their message locks, "<identifier>.lck"
//   consumers/         a file for each consumer, whose lock tells that it lives
#ifndef VEL_PLATFORM_QUEUE_DIRECTORY_H
#define VEL_PLATFORM_QUEUE_DIRECTORY_H

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace vel {

inline constexpr std::string_view kMessageSuffix = ".msg";
inline constexpr std::string_view kLockSuffix = ".lck";

class Directory {
  public:
    // Makes what is missing below a directory and syncs it. Throws when the path is not that of a directory on a
    // local file system, from the root on.
    explicit Directory(std::string path);

    const std::string& path() const { return path_; }
    std::string database() const { return path_ + "/queue.db"; }
    std::string consumer(std::string_view identifier) const;

    // The base path of an entry; its files have this name and a suffix.
    std::string base(std::string_view identifier) const;
    std::string message(std::string_view identifier) const { return base(identifier).append(kMessageSuffix); }

    // Whether the path still leads to the directory that was looked at when this was made.
    bool is_there() const;

    // Makes the names of what stands in the directory itself last, and of an entry's files.
    void sync() const;
    void sync_shard_of(std::string_view identifier) const;

    // Hands out the identifier of each file with a suffix. Files may come and go meanwhile.
    void each_file(std::string_view suffix, const std::function<void(const std::string& identifier)>& visit) const;
    void each_consumer(const std::function<void(const std::string& identifier)>& visit) const;

    // Bytes that may still be written here.
    uint64_t free_bytes() const;

  private:
    std::string shard(unsigned number) const;

    std::string path_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

// Whether locks and shared memory of a path's file system stay on this machine. Throws when it cannot be told.
bool is_local(const std::string& path);

// Removes an entry's files; true when they are gone.
bool remove_files(const std::string& base) noexcept;

}  // namespace vel

#endif
