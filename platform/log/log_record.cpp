#include "platform/log/log_record.h"

#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <numeric>

#include "frame/ascii.h"

namespace vel {
namespace {

constexpr std::size_t kTimeMax = 64;                      // the widest numbers that the format below can print
constexpr std::size_t kHeadMax = 32;                      // process and level with their blanks
constexpr std::size_t kFramed = kTimeMax + kHeadMax + 2;  // all but application and text
constexpr std::size_t kEscapedMax = 4;                    // bytes that can stand for one

// What is left of a record when there is no memory for all of it.
constexpr std::size_t kCutApplication = 32;
constexpr std::size_t kCutText = 384;

using Escaped = bool (*)(char);
bool in_text(char c) { return ascii::is_control(c) || c == '\\'; }
bool in_application(char c) { return in_text(c) || c == ' '; }

std::size_t width(char c, Escaped escaped) {
    if (!escaped(c)) return 1;
    return c == '\n' || c == '\\' ? 2 : kEscapedMax;
}

std::size_t width(std::string_view text, Escaped escaped) {
    const auto add = [=](std::size_t sum, char c) { return sum + width(c, escaped); };
    return std::accumulate(text.begin(), text.end(), std::size_t{0}, add);
}

char* put_escaped(char* at, std::string_view text, Escaped escaped) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    for (const char c : text) {
        if (!escaped(c)) {
            *at++ = c;
            continue;
        }
        *at++ = '\\';
        if (c == '\\' || c == '\n') {
            *at++ = c == '\n' ? 'n' : c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            *at++ = 'x';
            *at++ = kDigits[byte / 16];
            *at++ = kDigits[byte % 16];
        }
    }
    return at;
}

// Local time with its distance from UTC (ISO 8601), and a blank.
char* put_time(char* at) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    ::localtime_r(&now.tv_sec, &local);
    const int minutes_east = static_cast<int>(local.tm_gmtoff / 60);
    const int away = std::abs(minutes_east);
    at += ::strftime(at, kTimeMax / 2, "%FT%T", &local);
    return at + std::snprintf(at, kTimeMax / 2, ".%03d%c%02d:%02d ", static_cast<int>(now.tv_nsec / 1'000'000),
                              minutes_east < 0 ? '-' : '+', away / 60, away % 60);
}

std::string_view without_line_end(std::string_view text) {
    if (text.ends_with('\n')) text.remove_suffix(1);
    if (text.ends_with('\r')) text.remove_suffix(1);
    return text;
}

}  // namespace

LogRecord::LogRecord(int level, std::string_view application, std::string_view text) noexcept {
    static_assert(kFramed + (kCutApplication + kCutText) * kEscapedMax <= kUsual);
    text = without_line_end(text);
    if (application.empty()) application = "-";
    char* start = usual_;
    const std::size_t needed = kFramed + width(application, in_application) + width(text, in_text);
    if (needed > kUsual) {
        longer_.reset(new (std::nothrow) char[needed]);
        if (longer_) {
            start = longer_.get();
        } else {
            application = application.substr(0, kCutApplication);
            text = text.substr(0, kCutText);
        }
    }
    char* at = put_time(start);
    time_ = static_cast<std::size_t>(at - start);
    at += std::snprintf(at, kHeadMax, "%ld %d ", static_cast<long>(::getpid()), level);
    at = put_escaped(at, application, in_application);
    *at++ = ' ';
    at = put_escaped(at, text, in_text);
    *at++ = '\n';
    line_ = {start, static_cast<std::size_t>(at - start)};
}

}  // namespace vel
