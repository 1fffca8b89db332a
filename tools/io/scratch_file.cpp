#include "tools/io/scratch_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "tools/io/exit_code.h"

namespace vel::command {
namespace {

constexpr mode_t kEverybody = 0666;
constexpr mode_t kPrivate = 0600;

}  // namespace

mode_t mode_of_new_files() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return kEverybody & ~mask;
}

ScratchFile::ScratchFile(Scratch& scratch)
    : file_(scratch.new_path()), fd_(::open(file_.path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPrivate)) {
    if (!fd_) throw Failure::of_system_call(Exit::cannot_create, file_.path());
}

void ScratchFile::write(std::string_view bytes) {
    size_ += bytes.size();
    waiting_ += bytes;
    if (waiting_.size() >= kBlock) flush();
}

PrivateFile ScratchFile::finish() {
    flush();
    return std::move(file_);
}

void ScratchFile::flush() {
    if (!write_all(fd_.get(), waiting_)) throw Failure::of_system_call(Exit::io_error, file_.path());
    waiting_.clear();
}

}  // namespace vel::command
