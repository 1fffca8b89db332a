#include "frame/new_file.h"

#include <sys/stat.h>

#include <cstdint>
#include <cstdio>

#include "frame/access.h"
#include "frame/file_pool.h"
#include "frame/line_file.h"

namespace vel {

bool close_whole(int handle, const char* path) {
    VEL_FILE* file = pooled_file(handle);
    if (!file) return false;
    LineFile output(file);
    const bool is_flushed = output.flush();
    if (!is_flushed) output.drop_buffer();  // Closing would try once more.
    const off_t end = ::lseek(handle, 0, SEEK_CUR);
    fileclose(handle);
    struct stat status {};
    return is_flushed && ::stat(path, &status) == 0 && status.st_size >= end && status.st_size <= INT32_MAX;
}

std::optional<NewFile> NewFile::create(const char* prefix, Writes writes) {
    COwned<char> path(_veltempnam(nullptr, prefix));
    return path ? create_at(std::move(path), writes) : std::nullopt;
}

std::optional<NewFile> NewFile::create_at(COwned<char> path, Writes writes) {
    const int handle = filecreate(path.get(), kForWriting, writes == Writes::buffered);
    if (handle != -1) return NewFile(std::move(path), handle);
    std::remove(path.get());  // It may be there: without memory it is made, and not opened.
    return std::nullopt;
}

bool NewFile::put(std::string_view text) {
    VEL_FILE* file = pooled_file(handle_);
    return file && LineFile(file).put(text) == 1;
}

char* NewFile::keep() {
    if (close_whole(std::exchange(handle_, -1), path_.get())) return path_.release();
    std::remove(path_.get());
    return nullptr;
}

NewFile::~NewFile() {
    if (handle_ == -1) return;
    if (VEL_FILE* file = pooled_file(handle_)) LineFile(file).drop_buffer();
    fileclose(handle_);
    std::remove(path_.get());
}

}  // namespace vel
