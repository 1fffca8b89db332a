// Kept: only the first line of a field is read; lines that continue it stay behind the new one (rewrite).
#include "build/date_lines.h"

#include <time.h>

#include "build/texts.h"
#include "frame/ascii.h"
#include "frame/log.h"
#include "frame/owned.h"
#include "rfc822/date.h"
#include "vel/rfc822.h"

namespace vel {
namespace {

COwned<UTCtime> parsed(int (*parse)(const char*, UTCtime**), const char* text) {
    UTCtime* time = nullptr;
    parse(text, &time);
    return COwned<UTCtime>(time);
}

COwned<UTCtime> current_time(time_t now) {
    char text[kCtimeTextSize];
    return parsed(ctime2UTC, ::ctime_r(&now, text));
}

std::string date_text(const std::string& value) {
    char text[kDateTextSize];
    const time_t now = ::time(nullptr);
    COwned<UTCtime> time = parsed(rfc2UTC, value.c_str());
    if (!time) {
        log_text(kLogNotice, "Received invalid date.  Adopting the current time instead.");
        time = current_time(now);
    }
    // A year that no record takes is written all the same.
    if (!UTC2rfc(time.get(), text)) time_t2rfc822date(now, text);
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
