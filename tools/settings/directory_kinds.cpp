// The kinds of values that name files and directories.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "tools/settings/value_kinds.h"
#include "tools/text/ascii.h"
#include "vel/platform/queue.h"

namespace vel::command {
namespace {

constexpr const char* kNotAbsolute = "is not absolute: each program would look for it where it was started";

std::string reason_of_system() {
    return std::string("cannot be used: ").append(std::generic_category().message(errno));
}

// As the process may, whoever started it.
bool may(const std::string& path, int access) { return ::faccessat(AT_FDCWD, path.c_str(), access, AT_EACCESS) == 0; }

std::string wrong_with_directory(const std::string& path, int access) {
    if (!path.starts_with('/')) return kNotAbsolute;
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return reason_of_system();
    if (!S_ISDIR(status.st_mode)) return "is no directory";
    return may(path, access) ? "" : reason_of_system();
}

}  // namespace

std::string a_directory_or_nothing(const std::string& value) {
    return value.empty() ? "" : wrong_with_directory(value, R_OK | X_OK);
}

std::string a_temporary_directory(const std::string& value) {
    if (value.empty()) return "is empty: new files would be made in the root directory";
    return wrong_with_directory(value, W_OK | X_OK);
}

std::string a_queue(const std::string& value) {
    if (value.empty()) return "is empty: there is no queue";
    std::string wrong = wrong_with_directory(value, R_OK | W_OK | X_OK);
    if (!wrong.empty()) return wrong;
    return MQIsLocal(value.c_str()) ? "" : "is not on a local file system";
}

std::string a_log_target(const std::string& value) {
    if (value.empty() || same(value, "stderr") || same(value, "syslog")) return {};
    if (!value.starts_with('/')) return kNotAbsolute;
    struct stat status {};
    if (::stat(value.c_str(), &status) != 0) {
        return errno == ENOENT ? wrong_with_directory(std::filesystem::path(value).parent_path(), W_OK | X_OK)
                               : reason_of_system();
    }
    if (S_ISDIR(status.st_mode)) return "is a directory";
    return may(value, W_OK) ? "" : reason_of_system();
}

std::string a_preamble(const std::string& value) {
    if (same(value, "none")) return {};
    if (!value.starts_with('/')) return kNotAbsolute;
    if (!may(value, R_OK)) return reason_of_system() + "; the built-in text is taken";
    std::error_code failed;
    return std::filesystem::is_directory(value, failed) ? "is a directory" : "";
}

}  // namespace vel::command
