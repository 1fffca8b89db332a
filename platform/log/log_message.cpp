#include "frame/at_boundary.h"
#include "platform/keep_errno.h"
#include "platform/log/log_record.h"
#include "platform/log/log_target.h"
#include "vel/platform/log.h"

namespace {

struct Capture {
    LogCaptureSink sink;
    void* context;
    bool written;  // the lines go to the log too
};

// Plain data: it can be asked for while a thread starts or ends.
constinit thread_local Capture capture{nullptr, nullptr, true};

int start(const Capture& wanted) {
    if (!wanted.sink) return 0;
    capture = wanted;
    return 1;
}

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
    const Capture asked = capture;
    if (asked.written) write_line(level, application, text);
    if (asked.sink) asked.sink(asked.context, level, application, text);
}

int LogCaptureStart(LogCaptureSink sink, void* context) { return start({sink, context, false}); }

int LogWatchStart(LogCaptureSink sink, void* context) { return start({sink, context, true}); }

void LogCaptureStop(void) { capture = {nullptr, nullptr, true}; }

}  // extern "C"
