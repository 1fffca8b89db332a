// Reads dates (RFC 822 section 5.1, and the layout of ctime). Departures from the RFC:
//  - the weekday's name is any word, and is not compared with the date;
//  - comments are not understood;
//  - months are known by their first three letters, in the case of "Jan" only;
//  - the time and the zone may be missing;
//  - years are those from 1980 to 2037.
#include "frame/owned.h"
#include "rfc822/calendar.h"
#include "rfc822/date.h"
#include "rfc822/date_reader.h"
#include "vel/rfc822.h"

namespace vel {
namespace {

static_assert(sizeof(UTCtime) == 36);

constexpr std::size_t kMonthLetters = 3;

bool read_day(DateReader& in, UTCtime& time) {
    in.skip_blanks();
    if (!in.at_digit()) return false;
    time.day = in.number();
    return true;
}

// Kept: "JAN" and "jan" are no months.
bool read_month(DateReader& in, UTCtime& time) {
    in.skip_blanks();
    const int32_t month = cmd_srch(in.letters().substr(0, kMonthLetters), tbl_month);
    time.month = month + 1;
    return month >= 0;
}

bool read_year(DateReader& in, UTCtime& time) {
    in.skip_blanks();
    if (!in.at_digit()) return false;
    time.year = full_year(in.number());
    return is_known_year(time.year);
}

// [hour [":" minute [":" second]]], a missing number being 0.
bool read_clock(DateReader& in, UTCtime& time) {
    in.skip_blanks();
    time.hour = in.number();
    in.skip_blanks();
    if (in.skip(':')) {
        time.minute = in.number();
        in.skip_blanks();
        if (in.skip(':')) {
            time.second = in.number();
            time.flags |= kSecondsGiven;
            in.skip_blanks();
        }
    }
    return time.hour < 24 && time.minute <= 59 && time.second <= 59;
}

bool is_day_of_month(const UTCtime& time) { return time.day >= 1 && time.day <= days_of(time.month, time.year); }

// date-time = [day ","] date time ; dd mm yy hh:mm:ss zzz
bool read_rfc822(DateReader in, UTCtime& time) {
    in.skip_blanks();
    if (!in.letters().empty()) in.skip_blanks_and_punctuation();  // Kept: any word is a weekday.
    if (!read_day(in, time) || !read_month(in, time) || !read_year(in, time) || !is_day_of_month(time)) return false;
    if (!read_clock(in, time)) return false;
    getzone(in.rest(), &time);
    return true;
}

// A word that another word follows is the weekday; a month is followed by its day.
void skip_weekday(DateReader& in) {
    in.skip_blanks();
    DateReader ahead = in;
    ahead.letters();
    ahead.skip_blanks_and_punctuation();
    if (ahead.at_letter()) in = ahead;
}

// Www Mmm dd hh:mm:ss [zzz] yyyy
bool read_ctime(DateReader in, UTCtime& time) {
    skip_weekday(in);
    if (!read_month(in, time) || !read_day(in, time) || !read_clock(in, time)) return false;
    if (in.at_letter()) {
        getzone(in.rest(), &time);
        in.letters();
    }
    if (!read_year(in, time) || !is_day_of_month(time)) return false;
    // Kept: an offset of 0, even that of GMT, is taken for local time, and local time for standard time.
    if (time.zone == 0) {
        time.zone = static_cast<int32_t>(-(seconds_west_of_utc() / 60));
        time.flags |= kZoneGiven;
    }
    return true;
}

int parse(const char* text, UTCtime** result, bool (*read)(const char*, UTCtime&)) {
    if (!result) return 0;
    *result = nullptr;
    UTCtime time;
    if (!text || !read(text, time)) return 0;
    *result = static_cast<UTCtime*>(std::malloc(sizeof time));
    if (!*result) return 0;
    **result = time;
    return 1;
}

}  // namespace

bool read_rfc822_date(const char* text, UTCtime& time) {
    time = {};
    return read_rfc822(DateReader(text), time);
}

bool read_ctime_date(const char* text, UTCtime& time) {
    time = {};
    return read_ctime(DateReader(text), time);
}

}  // namespace vel

extern "C" {

int rfc2UTC(const char* text, UTCtime** time) { return vel::parse(text, time, vel::read_rfc822_date); }
int ctime2UTC(const char* text, UTCtime** time) { return vel::parse(text, time, vel::read_ctime_date); }

}  // extern "C"
