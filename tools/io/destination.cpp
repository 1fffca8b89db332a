#include "tools/io/destination.h"

#include <sys/stat.h>

#include <cerrno>

#include "tools/io/exit_code.h"
#include "tools/io/place_new.h"
#include "tools/io/scratch_file.h"
#include "tools/text/safe_name.h"

namespace vel::command {
namespace {

constexpr unsigned kFirstNumber = 2;  // the second file of a name

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

// The next numbered name behind one that is taken.
std::string Destination::next_path(const std::string& name) {
    unsigned& number = last_numbers_.try_emplace(name, kFirstNumber - 1).first->second;
    return directory_ + "/" + numbered(name, ++number);
}

std::string Destination::place(const std::string& name, const char* file, uint64_t size) {
    const auto held = scratch_.hold();
    std::string path = directory_ + "/" + name;
    if (::chmod(file, mode_) != 0) throw Failure::of_system_call(Exit::cannot_create, path);
    while (!place_new(file, path.c_str())) {
        if (errno != EEXIST) throw Failure::of_system_call(Exit::cannot_create, path);
        path = next_path(name);
    }
    --left_.files;
    left_.bytes -= size;
    return path;
}

}  // namespace vel::command
