#include "tools/destination.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

#include "tools/descriptor.h"
#include "tools/exit_code.h"
#include "tools/safe_name.h"

namespace vel::command {
namespace {

constexpr mode_t kEverybody = 0666;
constexpr mode_t kPrivate = 0600;
constexpr unsigned kFirstNumber = 2;  // the second file of a name

mode_t mode_of_new_files() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return kEverybody & ~mask;
}

}  // namespace

Destination::Destination(const std::string& directory, const Limits& limits, Scratch& scratch)
    : directory_(directory),
      limits_(limits),
      left_(limits),
      scratch_(scratch.below(directory)),
      mode_(mode_of_new_files()) {
    struct stat status {};
    if (::stat(directory_.c_str(), &status) != 0) return;
    if (!S_ISDIR(status.st_mode)) throw Failure(Exit::cannot_create, directory_ + ": is not a directory");
    if (::access(directory_.c_str(), W_OK | X_OK) != 0) throw Failure::of_system_call(Exit::cannot_create, directory_);
}

// Makes an empty file under the name or, when that is taken, the next free numbered one.
std::string Destination::reserve(const std::string& name) {
    std::string path = directory_ + "/" + name;
    for (;;) {
        const Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kPrivate));
        if (file) return path;
        if (errno != EEXIST) throw Failure::of_system_call(Exit::cannot_create, path);
        unsigned& number = last_numbers_.try_emplace(name, kFirstNumber - 1).first->second;
        path = directory_ + "/" + numbered(name, ++number);
    }
}

std::string Destination::place(const std::string& name, const char* file, uint64_t size) {
    const auto held = scratch_.hold();
    const std::string path = reserve(name);
    if (::chmod(file, mode_) != 0 || std::rename(file, path.c_str()) != 0) {
        const Failure failure = Failure::of_system_call(Exit::cannot_create, path);
        std::remove(path.c_str());
        throw failure;
    }
    --left_.files;
    left_.bytes -= size;
    return path;
}

}  // namespace vel::command
