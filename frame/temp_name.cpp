// Names for new files, numbered by a counter file that all processes of the gateway share.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>
#include <thread>

#include "frame/at_boundary.h"
#include "frame/line_file.h"
#include "frame/settings.h"

namespace vel {
namespace {

constexpr Setting<4095> kTemporaryDirectory{"Gateway", "TemporaryDirectory", "/tmp"};
constexpr const char* kCounterFile = "/tmpcnt.$$$";
constexpr mode_t kCounterMode = 0660;
constexpr int32_t kLastNumber = 99999;
constexpr int kAttempts = 20;
constexpr std::chrono::milliseconds kPause{50};  // before the next number, when a name is taken

bool lock(int fd) {
    int result = 0;
    do result = ::flock(fd, LOCK_EX);
    while (result == -1 && errno == EINTR);
    return result == 0;
}

// The number after the stored one; 0 for an empty file and for a number that was never handed out.
std::optional<int32_t> next_number(int fd) {
    int32_t number = 0;
    const ssize_t got = read_again(fd, &number, sizeof number);
    if (got < 0) return std::nullopt;
    if (got < static_cast<ssize_t>(sizeof number) || number < 0 || number >= kLastNumber) return 0;
    return number + 1;
}

// Takes the next number. Closing the file gives the lock up.
std::optional<int32_t> count_up(const std::string& counter_file) {
    const Descriptor file(::open(counter_file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kCounterMode));
    if (!file || !lock(file.get())) return std::nullopt;
    const std::optional<int32_t> number = next_number(file.get());
    if (!number || ::lseek(file.get(), 0, SEEK_SET) == -1) return std::nullopt;
    if (!write_all(file.get(), &*number, sizeof *number)) return std::nullopt;
    return number;
}

bool exists(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0;
}

COwned<char> make_name(const char* prefix) {
    const SettingText<4095> setting = read_directly(kTemporaryDirectory);
    const std::string directory = setting.data();
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const std::optional<int32_t> number = count_up(directory + kCounterFile);
        if (!number) return nullptr;
        char digits[16];
        std::snprintf(digits, sizeof digits, "%.05d", *number);
        const std::string path = directory + '/' + (prefix ? prefix : "") + digits;
        if (!exists(path)) return copy_text(path);
        std::this_thread::sleep_for(kPause);
    }
    return nullptr;
}

}  // namespace
}  // namespace vel

extern "C" {

char* _veltempnam(const char*, const char* prefix) {
    return vel::at_boundary<char*>(nullptr, [=] { return vel::make_name(prefix).release(); });
}

char* VELGetTempFileName(const char* directory, const char* prefix) { return _veltempnam(directory, prefix); }

}  // extern "C"
