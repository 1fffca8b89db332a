#include "tools/io/target.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "tools/io/blocks.h"
#include "tools/io/scratch_file.h"

namespace vel::command {
namespace {

constexpr std::string_view kStandardOutput = "-";
constexpr mode_t kPrivate = 0600;
constexpr mode_t kPermissions = 07777;

Descriptor open_for_writing(const std::string& path, int flags) {
    Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC | flags, kPrivate));
    if (!file) throw Failure::of_system_call(Exit::cannot_create, path);
    return file;
}

std::string directory_of(const std::string& path) {
    const std::string parent = std::filesystem::path(path).parent_path();
    return parent.empty() ? "." : parent;
}

bool is_open_for_writing(int fd) { return (::fcntl(fd, F_GETFL) & O_ACCMODE) != O_RDONLY; }

// A link is followed, so that what it leads to is replaced.
std::string real_path(const std::string& path) {
    std::error_code failed;
    const std::filesystem::path real = std::filesystem::canonical(path, failed);
    return failed ? path : real.string();
}

}  // namespace

Target::Target(const std::string& path, Session& session) : output_(session.output), scratch_(&session.scratch) {
    if (path != kStandardOutput) choose_place(path, session);
}

void Target::choose_place(const std::string& path, Session& session) {
    if (path.empty()) throw Failure(Exit::usage, "a file to write has a name");
    path_ = path;
    struct stat status {};
    const bool stands = ::stat(path.c_str(), &status) == 0;
    if (stands && S_ISDIR(status.st_mode)) throw Failure(Exit::cannot_create, path + ": is a directory");
    if (stands && ::access(path.c_str(), W_OK) != 0) throw Failure::of_system_call(Exit::cannot_create, path);
    if (stands && !S_ISREG(status.st_mode)) {
        out_.emplace(open_for_writing(path, 0));
        return;
    }
    streams_ = false;
    mode_ = stands ? status.st_mode & kPermissions : mode_of_new_files();
    if (stands) path_ = real_path(path);
    const std::string directory = directory_of(path_);
    if (::access(directory.c_str(), W_OK | X_OK) != 0) throw Failure::of_system_call(Exit::cannot_create, path);
    scratch_ = &session.scratch.below(directory);
}

int Target::descriptor() {
    hands_out_ = true;
    if (is_standard_output()) {
        output_.flush();
        return STDOUT_FILENO;
    }
    if (!streams_) {
        prepared_ = scratch_->new_path();
        out_.emplace(open_for_writing(prepared_, O_CREAT | O_EXCL));
    }
    return out_->get();
}

void Target::finish() {
    if (streams_) return;
    if (::close(out_->release()) != 0) fail(errno);  // some file systems write only now
    place(prepared_);
}

void Target::take(const std::string& file) {
    if (!streams_) return place(file);
    for_each_block(open_for_reading(file).get(), [&](std::string_view block) {
        if (is_standard_output()) {
            output_.write(block);
        } else if (!write_all(out_->get(), block)) {
            fail(errno);
        }
        return true;
    });
}

void Target::place(const std::string& file) {
    // A crash must not leave an empty file in the place of what stood there.
    if (::fsync(open_for_reading(file).get()) != 0) fail(errno);
    const auto held = scratch_->hold();
    const bool placed = ::chmod(file.c_str(), mode_) == 0 && std::rename(file.c_str(), path_.c_str()) == 0;
    if (!placed) throw Failure::of_system_call(Exit::cannot_create, path_);
}

bool Target::is_to_blame_for(int error) const {
    switch (error) {
        case EPIPE:
        case ENOSPC:
        case EDQUOT:
        case EFBIG: return true;
        case EBADF: return hands_out_ && is_standard_output() && !is_open_for_writing(STDOUT_FILENO);
        default: return false;
    }
}

void Target::fail(int error) {
    if (is_standard_output() && hands_out_) throw BrokenOutput{error};
    errno = error;
    throw Failure::of_system_call(Exit::io_error, is_standard_output() ? scratch_->directory() : path_);
}

}  // namespace vel::command
