#include "platform/log/log_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/whole_file.h"

namespace vel {
namespace {

// Log lines name people: others do not read them.
constexpr mode_t kLogMode = 0640;

// A pipe without a reader is refused, not waited for.
constexpr int kLogFlags = O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

bool same_file(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

}  // namespace

// A program that closes descriptors it did not open may since have been given our number for a file
// of its own: no line may land in there, and it is not ours to close. So the number alone is never
// trusted.
class LogFile::Opened {
  public:
    explicit Opened(std::string_view path)
        : path_(path), fd_(::open(path_.c_str(), kLogFlags, kLogMode)), usable_(::fstat(fd_, &status_) == 0) {}
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;
    ~Opened() {
        if (still_ours()) ::close(fd_);
    }

    bool still_ours() const {
        struct stat now;
        return usable_ && ::fstat(fd_, &now) == 0 && same_file(now, status_);
    }

    bool stands_at(std::string_view path) const {
        struct stat now;
        return path == path_ && ::stat(path_.c_str(), &now) == 0 && same_file(now, status_);
    }

    bool append(std::string_view record) const { return usable_ && write_whole(fd_, record); }

  private:
    const std::string path_;
    const int fd_;
    struct stat status_;
    const bool usable_;
};

std::shared_ptr<const LogFile::Opened> LogFile::current(std::string_view path) {
    const std::lock_guard lock(mutex_);
    if (!file_ || !file_->stands_at(path) || !file_->still_ours()) file_ = std::make_shared<const Opened>(path);
    return file_;
}

bool LogFile::append(std::string_view path, std::string_view record) { return current(path)->append(record); }

}  // namespace vel
