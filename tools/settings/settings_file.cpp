#include "tools/settings/settings_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <system_error>

#include "tools/io/blocks.h"

namespace vel::command {
namespace {

constexpr off_t kLargest = 4 * 1024 * 1024;  // that the library's reader takes

std::string reason_of_system() {
    return std::string("cannot be read: ").append(std::generic_category().message(errno));
}

// Why not; empty when it has been read. Never waits for a pipe's other end.
std::string read(const std::string& path, std::string& text) {
    if (path.size() >= PATH_MAX) return "cannot be read: the path is too long";
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0) return reason_of_system();
    if (!S_ISREG(status.st_mode)) return "is no regular file";
    if (status.st_size > kLargest) return "is larger than 4 MiB";
    try {
        for_each_block(file.get(), [&](std::string_view block) {
            text += block;
            return text.size() <= static_cast<std::size_t>(kLargest);
        });
    } catch (const Failure& failure) {
        return std::string("cannot be read: ") + failure.what();
    }
    return {};
}

}  // namespace

SettingsFile read_settings_file() {
    SettingsFile file;
    const char* directory = ::secure_getenv("OSTRA_CONFIG_DIR");
    file.by_environment = directory && *directory;
    file.path = std::string(file.by_environment ? directory : "/etc/ostra").append("/ostra.ini");
    file.trouble = read(file.path, file.text);
    struct stat status {};
    file.missing = !file.trouble.empty() && ::stat(file.path.c_str(), &status) != 0 && errno == ENOENT;
    if (file.missing) file.trouble = "is missing";
    return file;
}

}  // namespace vel::command
