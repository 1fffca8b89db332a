// Writes dates (RFC 822 section 5.1, years in four digits after RFC 1123 section 5.2.14).
#include <time.h>

#include <cstdio>
#include <cstdlib>

#include "frame/log.h"
#include "rfc822/calendar.h"
#include "rfc822/date.h"
#include "vel/rfc822.h"

namespace vel {
namespace {

constexpr char kLogName[] = "ParseDate";

// A signed number's text of up to 11 characters, twice, behind a sign.
constexpr std::size_t kZoneTextSize = 24;
constexpr std::size_t kSecondsTextSize = 16;

// Completes a year of two digits in the record; false for a year that no date has.
bool fix_year(UTCtime& time) {
    const int32_t year = full_year(time.year);
    if (!is_known_year(year)) {
        // Kept: the wording. Nothing is put in the year's place.
        log_line_as(kLogName, kLogNotice, "Received invalid year value %i.  Use current year instead.", time.year);
        return false;
    }
    if (year != time.year) {
        log_line_as(kLogName, kLogNotice, "Received year value %i.  Changing it to %i.", time.year, year);
        time.year = year;
    }
    return true;
}

void format(const UTCtime& time, char* output) {
    char zone[kZoneTextSize] = "+0000";
    if (time.flags & kZoneGiven) {
        std::snprintf(zone, sizeof zone, "%c%02d%02d", time.zone >= 0 ? '+' : '-', std::abs(time.zone / 60),
                      std::abs(time.zone % 60));
    }
    char seconds[kSecondsTextSize] = "";
    if (time.flags & kSecondsGiven) std::snprintf(seconds, sizeof seconds, ":%02d", time.second);
    std::snprintf(output, kDateTextSize, "%s, %d %s %d %02d:%02d%s %s", Day[makewkday(&time)].keyword, time.day,
                  rcmd_srch(time.month - 1, tbl_month), time.year, time.hour, time.minute, seconds, zone);
}

// Seconds west of UTC at a local time.
long offset_of(const struct tm& local) {
    constexpr long kHour = 3600;
    long west = seconds_west_of_utc();
    // Kept: daylight saving time is one hour everywhere; beyond twelve hours east the day turns over.
    if (local.tm_isdst > 0) {
        west -= kHour;
        if (west < -12 * kHour) west += 24 * kHour;
    }
    return west;
}

}  // namespace
}  // namespace vel

extern "C" {

int UTC2rfc(UTCtime* time, char* output) {
    if (!output) return 0;
    *output = '\0';
    if (!time || time->month < 1 || time->month > vel::kMonths || !vel::fix_year(*time)) return 0;
    vel::format(*time, output);
    return 1;
}

int time_t2rfc822date(time_t time, char* output) {
    if (!output) return -1;
    *output = '\0';
    struct tm local;
    char ctime_text[26];  // a time with a year of more than four digits has none
    if (!::localtime_r(&time, &local) || !::asctime_r(&local, ctime_text)) return -1;
    const long west = vel::offset_of(local);
    const long offset = std::labs(west);
    std::snprintf(output, vel::kDateTextSize, "%s, %d %s %d %02d:%02d:%02d %c%02ld%02ld", DaysOfWeek[local.tm_wday],
                  local.tm_mday, MonthsOfYear[local.tm_mon], local.tm_year + 1900, local.tm_hour, local.tm_min,
                  local.tm_sec, west < 1 ? '+' : '-', offset / 3600, offset % 3600 / 60);
    return 0;
}

}  // extern "C"
