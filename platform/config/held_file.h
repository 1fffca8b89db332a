// A file that has been read, held open: a look at its descriptor tells that it has changed, or lost its
// name, for a third of what a walk along its path costs.
#ifndef VEL_PLATFORM_CONFIG_HELD_FILE_H
#define VEL_PLATFORM_CONFIG_HELD_FILE_H

#include <atomic>
#include <cstdint>

#include "platform/whole_file.h"

namespace vel {

class HeldFile {
  public:
    // Duplicates the descriptor of a file with this stamp; when that fails, nothing is held and the
    // file never counts as unchanged.
    HeldFile(int fd, const FileStamp& stamp);
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;
    ~HeldFile();

    // Whether the file is still what it was and, as far as is known, where it was. A path that has come to
    // lead elsewhere leaves no trace on the file (a renamed directory, a changed symbolic link, a mount), so
    // the path is walked once in each step of the kernel's clock, 1 to 10 ms, and a relative one each time.
    bool stands_at(const char* path);

  private:
    const int fd_;
    const FileStamp stamp_;
    std::atomic<int64_t> walked_at_{0};
};

}  // namespace vel

#endif
