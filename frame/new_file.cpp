#include "frame/new_file.h"

#include <cstdio>

#include "frame/access.h"
#include "frame/file_pool.h"
#include "frame/line_file.h"

namespace vel {

std::optional<NewFile> NewFile::create(const char* prefix, Writes writes) {
    COwned<char> path(_veltempnam(nullptr, prefix));
    if (!path) return std::nullopt;
    const int handle = filecreate(path.get(), kForWriting, writes == Writes::buffered);
    if (handle == -1) return std::nullopt;
    return NewFile(std::move(path), handle);
}

char* NewFile::keep() {
    VEL_FILE* file = pooled_file(handle_);
    if (!file || !LineFile(file).flush()) return nullptr;
    fileclose(std::exchange(handle_, -1));
    return path_.release();
}

NewFile::~NewFile() {
    if (handle_ == -1) return;
    if (VEL_FILE* file = pooled_file(handle_)) LineFile(file).drop_buffer();
    fileclose(handle_);
    std::remove(path_.get());
}

}  // namespace vel
