// Months and weekdays: their English names, their numbers, the days of a month.
#ifndef VEL_RFC822_CALENDAR_H
#define VEL_RFC822_CALENDAR_H

#include <cstdint>

#include "rfc822/keyword_table.h"

// As struct tm counts them: 0 is Sunday, 0 is January.
inline constexpr const char* DaysOfWeek[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
inline constexpr const char* MonthsOfYear[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                               "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

inline constexpr cmd_table tbl_month[] = {
    {"Jan", 0, 0}, {"Feb", 1, 0}, {"Mar", 2, 0}, {"Apr", 3, 0},  {"May", 4, 0},  {"Jun", 5, 0},    {"Jul", 6, 0},
    {"Aug", 7, 0}, {"Sep", 8, 0}, {"Oct", 9, 0}, {"Nov", 10, 0}, {"Dec", 11, 0}, {nullptr, -1, 0},
};

// By the numbers of makewkday: 0 is Saturday.
inline constexpr cmd_table Day[] = {
    {"Sat", 0, 0}, {"Sun", 1, 0}, {"Mon", 2, 0}, {"Tue", 3, 0},
    {"Wed", 4, 0}, {"Thu", 5, 0}, {"Fri", 6, 0}, {nullptr, -1, 0},
};

// Days of each month in a common year.
inline constexpr int dmsize[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

namespace vel {

constexpr int kMonths = 12;
constexpr int kWeekdays = 7;

constexpr bool is_leap_year(int32_t year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

// Days of a month, 1 to 12, in that year.
constexpr int days_of(int32_t month, int32_t year) { return month == 2 && is_leap_year(year) ? 29 : dmsize[month - 1]; }

}  // namespace vel

#endif
