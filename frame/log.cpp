#include "frame/log.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <new>
#include <string>

#include "vel/frame.h"
#include "vel/platform/log.h"

namespace vel {
namespace {

// Holds nearly every line, so that logging allocates only for long ones.
constexpr std::size_t kUsualLine = 1024;

void log_formatted(const char* application, int level, const char* format, va_list arguments) {
    const int saved = errno;
    char usual[kUsualLine];
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(usual, sizeof usual, format, arguments);
    if (length >= static_cast<int>(sizeof usual)) {
        try {
            std::string longer(static_cast<std::size_t>(length) + 1, '\0');
            std::vsnprintf(longer.data(), longer.size(), format, again);
            LogMessage(level, application, longer.c_str());
        } catch (const std::bad_alloc&) {
            LogMessage(level, application, usual);
        }
    } else {
        LogMessage(level, application, usual);
    }
    va_end(again);
    errno = saved;
}

}  // namespace

void log_text(int level, const char* text) {
    const int saved = errno;
    LogMessage(level, appName, text);
    errno = saved;
}

void log_line(int level, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    log_formatted(appName, level, format, arguments);
    va_end(arguments);
}

void log_line_as(const char* application, int level, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    log_formatted(application, level, format, arguments);
    va_end(arguments);
}

}  // namespace vel
