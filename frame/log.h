// Log lines of the library: formatted here, written by the imported LogMessage.
#ifndef VEL_FRAME_LOG_H
#define VEL_FRAME_LOG_H

namespace vel {

constexpr int kLogError = 1;
constexpr int kLogAccount = 3;
constexpr int kLogNotice = 6;

// Logs a text as it is, with the caller's module name. Keeps errno.
void log_text(int level, const char* text);

// Logs a formatted line with the caller's module name; a line too long for memory is cut.
[[gnu::format(printf, 2, 3)]] void log_line(int level, const char* format, ...);

// The same under an application name of its own.
[[gnu::format(printf, 3, 4)]] void log_line_as(const char* application, int level, const char* format, ...);

}  // namespace vel

#endif
