#include "platform/log/log_target.h"

#include <syslog.h>
#include <unistd.h>

#include "frame/ascii.h"
#include "platform/log/log_file.h"
#include "platform/log/log_settings.h"
#include "platform/whole_file.h"

namespace vel {
namespace {

constexpr int kAccounting = 3;

// openlog is left alone: it belongs to the program.
void write_to_syslog(int level, std::string_view text) {
    const int priority = level < kAccounting ? LOG_ERR : level == kAccounting ? LOG_NOTICE : LOG_INFO;
    ::syslog(LOG_MAIL | priority, "%.*s", static_cast<int>(text.size()), text.data());
}

// Never destroyed, so that lines can be written until the process is gone.
LogFile& log_file() {
    static LogFile& only = *new LogFile;
    return only;
}

}  // namespace

// There is nowhere to report that this fails.
void write_to_stderr(const LogRecord& record) { write_whole(STDERR_FILENO, record.line()); }

bool write_to_target(int level, const LogRecord& record) {
    const LogSettings settings;
    if (!settings.wants(level)) return true;
    const auto target = settings.target();
    if (ascii::equals_ignoring_case(target, "stderr")) {
        write_to_stderr(record);
    } else if (ascii::equals_ignoring_case(target, "syslog")) {
        write_to_syslog(level, record.without_time());
    } else {
        return log_file().append(target, record.line());
    }
    return true;
}

}  // namespace vel
