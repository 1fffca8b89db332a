#include "rfc822/calendar.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "vel/rfc822.h"

namespace vel {
namespace {

static_assert(std::size(MonthsOfYear) == kMonths && std::size(dmsize) == kMonths);
static_assert(std::size(tbl_month) == kMonths + 1 && std::size(Day) == kWeekdays + 1);
static_assert(std::all_of(std::begin(tbl_month), std::end(tbl_month) - 1, [](const cmd_table& row) {
    return row.code == &row - tbl_month && std::string_view(row.keyword) == MonthsOfYear[row.code];
}));
static_assert(std::all_of(std::begin(Day), std::end(Day) - 1, [](const cmd_table& row) {
    return row.code == &row - Day && std::string_view(row.keyword) == DaysOfWeek[(row.code + 6) % kWeekdays];
}));

// England changed to the Gregorian calendar in 1752, and 1800 was the first year that its century rule
// made a common one: both show in the weekdays of the years after them.
constexpr int32_t kCenturyRuleAfter = 1800;
constexpr int32_t kGregorianAfter = 1752;

constexpr int64_t floor_divide(int64_t n, int64_t by) { return n / by - (n % by < 0 ? 1 : 0); }
constexpr int64_t modulo(int64_t n, int64_t by) { return n - floor_divide(n, by) * by; }

// The years' share of a weekday number: a day a year, one more a leap year.
constexpr int64_t weekday_shift(int64_t year) {
    int64_t shift = year + floor_divide(year + 3, 4) + 4;
    if (year > kCenturyRuleAfter) shift += (year - 1601) / 400 - (year - 1701) / 100;
    if (year > kGregorianAfter) shift += 3;
    return shift;
}

constexpr int weekday(int32_t year, int32_t month, int32_t day) {
    int64_t days = weekday_shift(year) + day;
    if (is_leap_year(year) && month > 2) ++days;
    for (int32_t before = 1; before < std::min(month, kMonths + 1); ++before) days += dmsize[before - 1];
    return static_cast<int>(modulo(days, kWeekdays));
}

static_assert(weekday(2000, 1, 1) == 0 && weekday(2024, 2, 29) == 5);

}  // namespace
}  // namespace vel

int makewkday(const UTCtime* time) { return time ? vel::weekday(time->year, time->month, time->day) : -1; }
