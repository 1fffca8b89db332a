// Output files: closing one so that all of it is there, and one under a temporary name that is removed again unless
// it is kept.
#ifndef VEL_FRAME_NEW_FILE_H
#define VEL_FRAME_NEW_FILE_H

#include <optional>
#include <string_view>

#include "frame/owned.h"

namespace vel {

// Closes a pooled file that was written, and tells whether all of it is there: the calls that write report success
// before the disk has answered. False also when it is too long to be opened again. Logs nothing.
bool close_whole(int handle, const char* path);

class NewFile {
  public:
    enum class Writes { direct, buffered };

    // Makes a file in the temporary directory; nothing when a name or the file cannot be had.
    static std::optional<NewFile> create(const char* prefix, Writes writes);

    // Makes the file of that path; what stands there is not cut, and goes when it cannot be opened.
    static std::optional<NewFile> create_at(COwned<char> path, Writes writes);

    NewFile(NewFile&& other) noexcept : path_(std::move(other.path_)), handle_(std::exchange(other.handle_, -1)) {}
    NewFile& operator=(NewFile&&) = delete;
    ~NewFile();

    // The pooled descriptor, for the descriptor calls.
    int handle() const { return handle_; }

    const char* path() const { return path_.get(); }

    // Writes a text through the line writer; false when it falls short.
    bool put(std::string_view text);

    // Closes the file and hands its path over; null, and no file, when not all of it is there.
    char* keep();

  private:
    NewFile(COwned<char> path, int handle) : path_(std::move(path)), handle_(handle) {}

    COwned<char> path_;
    int handle_;
};

}  // namespace vel

#endif
