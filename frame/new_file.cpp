#include "frame/new_file.h"

#include <sys/stat.h>

#include <cstdio>

#include "frame/file_pool.h"

namespace vel {
namespace {

constexpr int kForWriting = 2;

// Buffered output fails late, when the file is closed, and silently: what stands on disk decides.
bool holds(const char* path, off_t written) {
    struct stat status {};
    return ::stat(path, &status) == 0 && status.st_size >= written;
}

}  // namespace

std::optional<NewFile> NewFile::create(const char* prefix, Writes writes) {
    COwned<char> path(_veltempnam(nullptr, prefix));
    if (!path) return std::nullopt;
    const int handle = filecreate(path.get(), kForWriting, writes == Writes::buffered);
    if (handle == -1) return std::nullopt;
    return NewFile(std::move(path), handle);
}

char* NewFile::keep() {
    const VEL_FILE* file = pooled_file(handle_);
    const off_t written = file && file->buffered ? file->pos : 0;
    fileclose(std::exchange(handle_, -1));
    if (!holds(path_.get(), written)) {
        std::remove(path_.get());
        return nullptr;
    }
    return path_.release();
}

NewFile::~NewFile() {
    if (handle_ == -1) return;
    fileclose(handle_);
    std::remove(path_.get());
}

}  // namespace vel
