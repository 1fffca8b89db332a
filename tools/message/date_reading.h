// What the library makes of the text of a date.
#ifndef VEL_TOOLS_MESSAGE_DATE_READING_H
#define VEL_TOOLS_MESSAGE_DATE_READING_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/text/json_line.h"
#include "vel/rfc822.h"

namespace vel::command {

enum class DateLayout { rfc822, ctime };

struct DateReading {
    DateLayout layout;
    UTCtime time;
};

// Tries RFC 822's layout, then ctime's. Nothing when neither reads the text.
std::optional<DateReading> read_date(const std::string& text);

// Whether the text is a date as it stands in a header field.
bool is_rfc822_date(const std::string& text);

const char* name_of(DateLayout layout);

// "Mon, 1 Feb 1999 10:20:30 -0500", as UTC2rfc writes it.
std::string normalized(UTCtime time);

// The computed weekday, "Mon".
std::string_view weekday_of(const UTCtime& time);

// The weekday that the text names, "Mon"; empty when its first word is none.
std::string_view weekday_in(std::string_view text);

// Where the zone comes from.
enum class ZoneSource {
    text,
    system,   // ctime's layout without a zone, or with one that is UTC (a kept oddity of the library)
    missing,  // counts as UTC
};
ZoneSource zone_source(const DateReading& date, std::string_view text);

int64_t seconds_since_1970(const UTCtime& time);

// "1999-02-01T15:20:30Z"
std::string instant_of(const UTCtime& time);

// normalized, year to second, zone (minutes east; null: not given), weekday, utc, seconds_since_1970.
Json time_json(const UTCtime& time);

}  // namespace vel::command

#endif
