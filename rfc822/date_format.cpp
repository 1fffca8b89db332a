// Writes dates (RFC 822 section 5.1, years in four digits after RFC 1123 section 5.2.14).
#include <time.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iterator>
#include <string_view>

#include "frame/log.h"
#include "rfc822/calendar.h"
#include "rfc822/date.h"
#include "vel/rfc822.h"

namespace vel {
namespace {

constexpr char kLogName[] = "ParseDate";

// Writes into a caller's buffer for a date; what does not fit is cut.
class DateText {
  public:
    explicit DateText(char* output) : at_(output), last_(output + kDateTextSize - 1) { *at_ = '\0'; }

    DateText& text(std::string_view text) {
        at_ = std::copy_n(text.begin(), std::min<std::ptrdiff_t>(std::ssize(text), last_ - at_), at_);
        *at_ = '\0';
        return *this;
    }
    DateText& number(long value) {
        char digits[24];  // a long's, with its sign
        const auto end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
        return text({digits, static_cast<std::size_t>(end - digits)});
    }
    DateText& two_digits(long value) {
        if (value >= 0 && value <= 9) text("0");
        return number(value);
    }

  private:
    char* at_;
    char* last_;
};

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

// "Www, d Mmm yyyy hh:mm"
DateText start(char* output, const char* weekday, int day, const char* month, int year, int hour, int minute) {
    DateText out(output);
    out.text(weekday).text(", ").number(day).text(" ").text(month).text(" ").number(year);
    out.text(" ").two_digits(hour).text(":").two_digits(minute);
    return out;
}

void format(const UTCtime& time, char* output) {
    DateText out = start(output, Day[makewkday(&time)].keyword, time.day, rcmd_srch(time.month - 1, tbl_month),
                         time.year, time.hour, time.minute);
    if (time.flags & kSecondsGiven) out.text(":").two_digits(time.second);
    const int zone = time.flags & kZoneGiven ? time.zone : 0;
    out.text(zone >= 0 ? " +" : " -").two_digits(std::abs(zone / 60)).two_digits(std::abs(zone % 60));
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
    char ctime_text[vel::kCtimeTextSize];
    if (!vel::local_time(time, local) || !::asctime_r(&local, ctime_text)) return -1;
    const long west = vel::offset_of(local);
    const long offset = std::labs(west);
    vel::start(output, DaysOfWeek[local.tm_wday], local.tm_mday, MonthsOfYear[local.tm_mon], local.tm_year + 1900,
               local.tm_hour, local.tm_min)
        .text(":")
        .two_digits(local.tm_sec)
        .text(west < 1 ? " +" : " -")
        .two_digits(offset / 3600)
        .two_digits(offset % 3600 / 60);
    return 0;
}

}  // extern "C"
