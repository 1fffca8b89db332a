// One record of the log, formatted:
//
//   2025-03-30T01:59:59.123+01:00 4711 1 smtpgate ParseMimeMessage: out of memory.
//
// time, process, level, application (a "-" when empty, its blanks escaped) and the text, one blank
// between them and a line feed behind. A line feed inside is written "\n", a backslash "\\", other
// control characters "\xHH"; bytes above 127 stand as they are.
#ifndef VEL_PLATFORM_LOG_LOG_RECORD_H
#define VEL_PLATFORM_LOG_LOG_RECORD_H

#include <cstddef>
#include <memory>
#include <string_view>

namespace vel {

class LogRecord {
  public:
    // Never fails: a text too long for what memory there is left is cut.
    LogRecord(int level, std::string_view application, std::string_view text) noexcept;
    LogRecord(const LogRecord&) = delete;
    LogRecord& operator=(const LogRecord&) = delete;

    std::string_view line() const { return line_; }

    // From the process to the text, for a log that keeps time itself.
    std::string_view without_time() const { return line_.substr(time_, line_.size() - time_ - 1); }

  private:
    // Holds nearly every record, so that logging takes heap only for long ones.
    static constexpr std::size_t kUsual = 2048;

    char usual_[kUsual];
    std::unique_ptr<char[]> longer_;
    std::string_view line_;
    std::size_t time_ = 0;
};

}  // namespace vel

#endif
