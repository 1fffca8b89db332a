#include "frame/at_boundary.h"
#include "platform/keep_errno.h"
#include "platform/log/log_record.h"
#include "platform/log/log_target.h"
#include "vel/platform/log.h"

namespace {

struct Capture {
    LogCaptureSink sink;
    void* context;
};

// Plain data: it can be asked for while a thread starts or ends.
constinit thread_local Capture capture{nullptr, nullptr};

// A line that its target does not take goes to standard error, the last resort.
void write_line(int level, const char* application, const char* text) noexcept {
    const vel::LogRecord record(level, application, text);
    const bool written = vel::at_boundary(false, [&] { return vel::write_to_target(level, record); });
    if (!written) vel::write_to_stderr(record);
}

}  // namespace

extern "C" {

void LogMessage(int level, const char* application, const char* text) {
    const vel::KeepErrno errno_kept;
    if (!application) application = "";
    if (!text) text = "";
    if (capture.sink) {
        capture.sink(capture.context, level, application, text);
    } else {
        write_line(level, application, text);
    }
}

int LogCaptureStart(LogCaptureSink sink, void* context) {
    if (!sink) return 0;
    capture = {sink, context};
    return 1;
}

void LogCaptureStop(void) { capture = {nullptr, nullptr}; }

}  // extern "C"
