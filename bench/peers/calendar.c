#include "harness.h"

enum { kDaysBefore1970 = 719468 }; /* from 1 March of the year 0 */

/* Years begin in March, so that the leap day is the last one. */
long long seconds_since_1970(int year, int month, int day, int hour, int minute, int second, int zone) {
    const long long years = year - (month <= 2);
    const long long days_of_months = (153 * ((month + 9) % 12) + 2) / 5;
    const long long days = 365 * years + years / 4 - years / 100 + years / 400 + days_of_months + day - 1;
    return (days - kDaysBefore1970) * 86400 + hour * 3600LL + (minute - zone) * 60LL + second;
}
