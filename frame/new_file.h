// An output file under a temporary name that is removed again unless it is kept.
#ifndef VEL_FRAME_NEW_FILE_H
#define VEL_FRAME_NEW_FILE_H

#include <optional>

#include "frame/owned.h"

namespace vel {

class NewFile {
  public:
    enum class Writes { direct, buffered };

    // Makes a file in the temporary directory; nothing when a name or the file cannot be had.
    static std::optional<NewFile> create(const char* prefix, Writes writes);

    NewFile(NewFile&& other) noexcept : path_(std::move(other.path_)), handle_(std::exchange(other.handle_, -1)) {}
    NewFile& operator=(NewFile&&) = delete;
    ~NewFile();

    // The pooled descriptor, for the descriptor calls.
    int handle() const { return handle_; }

    const char* path() const { return path_.get(); }

    // Closes the file and hands its path over. Null when what is buffered cannot be written; the file
    // goes with this object then.
    char* keep();

  private:
    NewFile(COwned<char> path, int handle) : path_(std::move(path)), handle_(handle) {}

    COwned<char> path_;
    int handle_;
};

}  // namespace vel

#endif
