// Kept: only the first line of a field is read; lines that continue it stay behind the new one (rewrite).
#include "build/date_lines.h"

#include <time.h>

#include "build/texts.h"
#include "frame/ascii.h"
#include "frame/log.h"
#include "rfc822/date.h"

namespace vel {
namespace {

bool read_time(time_t now, UTCtime& time) {
    char text[kCtimeTextSize];
    return ::ctime_r(&now, text) && read_ctime_date(text, time);
}

std::string date_text(const std::string& value) {
    char text[kDateTextSize];
    const time_t now = ::time(nullptr);
    UTCtime time;
    bool is_read = read_rfc822_date(value.c_str(), time);
    if (!is_read) {
        log_text(kLogNotice, "Received invalid date.  Adopting the current time instead.");
        is_read = read_time(now, time);
    }
    // A year that no record takes is written all the same.
    if (!is_read || !UTC2rfc(&time, text)) time_t2rfc822date(now, text);
    return text;
}

}  // namespace

bool WithDatesRewritten::rewrite(std::string_view line, std::string_view field) {
    if (!ascii::starts_with_ignoring_case(line, field)) return false;
    text_ = date_text(std::string(line.substr(field.size())));
    text_.insert(0, std::string(field).append(" ")).append(kLineEnd);
    return true;
}

std::string_view WithDatesRewritten::operator()(std::string_view line, bool begins) {
    if (!in_header_) return line;
    if (!begins) return is_rewritten_ ? std::string_view() : line;
    in_header_ = !line.starts_with(kLineEnd);
    is_rewritten_ = in_header_ && (rewrite(line, "Date:") || rewrite(line, "Resent-date:"));
    return is_rewritten_ ? text_ : line;
}

}  // namespace vel
