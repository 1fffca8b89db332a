// What the readers and the writers of dates share.
#ifndef VEL_RFC822_DATE_H
#define VEL_RFC822_DATE_H

#include <time.h>

#include <cstddef>
#include <cstdint>

#include "vel/rfc822.h"

namespace vel {

// UTCtime.flags
constexpr int32_t kZoneGiven = 1;
constexpr int32_t kSecondsGiven = 2;

// The years that a date may have, written in full or as 80 to 99 and 0 to 37.
constexpr int32_t kFirstYear = 1980;
constexpr int32_t kLastYear = 2037;

// The year that two digits stand for; any other number stands for itself.
constexpr int32_t full_year(int32_t year) {
    if (year >= kFirstYear - 1900 && year <= 99) return year + 1900;
    if (year >= 0 && year <= kLastYear - 2000) return year + 2000;
    return year;
}

constexpr bool is_known_year(int32_t year) { return year >= kFirstYear && year <= kLastYear; }

// Bytes of a caller's buffer for a date's text, its NUL included.
constexpr std::size_t kDateTextSize = 64;

// Bytes of ctime's text, its line feed and NUL included. A time whose year has more than four digits
// has none.
constexpr std::size_t kCtimeTextSize = 26;

// What rfc2UTC and ctime2UTC read, without asking for memory. False when the text is no date.
bool read_rfc822_date(const char* text, UTCtime& time);
bool read_ctime_date(const char* text, UTCtime& time);

// The system's local time in the zone that TZ names now; localtime_r alone may still use the one before.
// False for a time whose year does not fit. Calls tzset, which sets the process's zone.
bool local_time(time_t time, struct tm& local);

// The system's offset without daylight saving time, in seconds west of UTC. Calls tzset too.
long seconds_west_of_utc();

}  // namespace vel

#endif
