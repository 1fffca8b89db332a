// Files that are read and written whole. No call is cut short by a signal.
#ifndef VEL_PLATFORM_WHOLE_FILE_H
#define VEL_PLATFORM_WHOLE_FILE_H

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "frame/owned.h"

namespace vel {

// What tells one state of a file from another. Times are nanoseconds since 1970.
struct FileStamp {
    explicit FileStamp(const struct stat& status);

    bool operator==(const FileStamp&) const = default;

    dev_t device;
    ino_t inode;
    off_t size;
    int64_t modified;
    int64_t changed;
};

int64_t nanoseconds(const timespec& time);

// The stamp of a regular file; nothing for anything else.
std::optional<FileStamp> stamp_of(const char* path);
std::optional<FileStamp> stamp_of(int fd);

// Opens a regular file for reading; never waits for a pipe's other end.
Descriptor open_regular(const char* path);

// The rest of a file; nothing when reading fails or finds more than limit bytes.
std::optional<std::string> read_whole(int fd, std::size_t limit);

// Writes all of it, with one write where the system takes it.
bool write_whole(int fd, std::string_view bytes);

}  // namespace vel

#endif
