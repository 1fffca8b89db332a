// A log file that stays open between lines and is opened anew when it has been rotated.
#ifndef VEL_PLATFORM_LOG_LOG_FILE_H
#define VEL_PLATFORM_LOG_LOG_FILE_H

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace vel {

class LogFile {
  public:
    // Appends a record with one write; false when the file cannot be had or takes less. Any thread:
    // the lock covers the choice of the file, not the writing.
    bool append(std::string_view path, std::string_view record);

  private:
    class Opened;
    std::shared_ptr<const Opened> current(std::string_view path);

    std::mutex mutex_;
    std::shared_ptr<const Opened> file_;
};

}  // namespace vel

#endif
