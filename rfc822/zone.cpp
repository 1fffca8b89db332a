// Departures from RFC 822 section 5.1:
//  - names beyond the RFC's are known, and the values of all of them are this system's own;
//  - AT stands before AST, so that the binary search does not find it;
//  - the minutes of a named zone west of UTC count eastward;
//  - the four characters behind a sign are taken for digits whatever they are.
#include "rfc822/zone.h"

#include <time.h>

#include <algorithm>
#include <iterator>
#include <optional>

#include "rfc822/date.h"
#include "rfc822/date_reader.h"
#include "vel/rfc822.h"

// Kept: the values, with the military letters signed as in RFC 822 (A is -100), and AT before AST.
constexpr cmd_table zone_tbl[] = {
    {"A", -100, 0},    {"AHST", -1000, 0}, {"AT", -200, 0},  {"AST", -400, 0},  {"B", -200, 0},
    {"BST", 100, 0},   {"BT", -1100, 0},   {"C", -300, 0},   {"CAT", -1000, 0}, {"CCT", 800, 0},
    {"CDT", -500, 0},  {"CET", 100, 0},    {"CST", -600, 0}, {"D", -400, 0},    {"E", -500, 0},
    {"EDT", -400, 0},  {"EET", 200, 0},    {"EST", -500, 0}, {"F", -600, 0},    {"G", -700, 0},
    {"GMT", 0, 0},     {"GST", 1000, 0},   {"H", -800, 0},   {"HST", -1030, 0}, {"I", -900, 0},
    {"IDLE", 1200, 0}, {"IDLW", -1200, 0}, {"IST", 530, 0},  {"IT", 300, 0},    {"JST", 900, 0},
    {"JT", 730, 0},    {"K", -1000, 0},    {"L", -1100, 0},  {"M", -1200, 0},   {"MDT", -600, 0},
    {"MET", 100, 0},   {"MST", -700, 0},   {"MT", 830, 0},   {"N", 100, 0},     {"NFT", -330, 0},
    {"NST", 630, 0},   {"NT", -1100, 0},   {"NZT", 1130, 0}, {"O", 200, 0},     {"P", 300, 0},
    {"PDT", -700, 0},  {"PST", -800, 0},   {"Q", 400, 0},    {"R", 500, 0},     {"S", 600, 0},
    {"SAST", 930, 0},  {"SST", 700, 0},    {"T", 700, 0},    {"U", 800, 0},     {"UT", 0, 0},
    {"V", 900, 0},     {"W", 1000, 0},     {"WAT", -100, 0}, {"WDT", 100, 0},   {"WET", 0, 0},
    {"X", 1100, 0},    {"Y", 1200, 0},     {"YST", -900, 0}, {"Z", 0, 0},       {nullptr, vel::kNoZone, 0},
};

namespace vel {
namespace {

static_assert(std::size(zone_tbl) == kZones + 1);
static_assert(std::count_if(zone_tbl, zone_tbl + kZones, [](const cmd_table& row) {
                  return cmdbsrch(row.keyword, zone_tbl, kZones) == kNoZone;
              }) == 1);
static_assert(cmdbsrch("AST", zone_tbl, kZones) == -400 && cmdbsrch("AT", zone_tbl, kZones) == kNoZone);

// Kept: the minutes are subtracted with their sign, so that HST (-1030) is -570.
constexpr int minutes_of_name(int hhmm) { return hhmm / 100 * 60 + (hhmm >= 0 ? hhmm % 100 : -(hhmm % 100)); }

// Kept: hhmm, unchecked. The text may end early; what is missing counts as 0.
int minutes_of_digits(const char* digits) {
    constexpr int kWorth[] = {600, 60, 10, 1};
    int minutes = 0;
    for (const int worth : kWorth) {
        if (*digits == '\0') break;
        minutes += (*digits++ - '0') * worth;
    }
    return minutes;
}

// zone = ("+" / "-") 4DIGIT / name
std::optional<int> zone_minutes(const char* text) {
    DateReader in(text);
    in.skip_blanks();
    if (in.skip('+')) return minutes_of_digits(in.rest());
    if (in.skip('-')) return -minutes_of_digits(in.rest());
    if (!in.at_letter()) return std::nullopt;
    const int32_t hhmm = cmdbsrch(in.letters(), zone_tbl, kZones);
    if (hhmm == kNoZone) return std::nullopt;
    return minutes_of_name(hhmm);
}

}  // namespace

bool local_time(time_t time, struct tm& local) {
    ::tzset();
    return ::localtime_r(&time, &local) != nullptr;
}

long seconds_west_of_utc() {
    ::tzset();
    return ::timezone;
}

}  // namespace vel

extern "C" {

int GetZoneInt(const char* text) { return text ? vel::zone_minutes(text).value_or(-1) : -1; }

void getzone(const char* text, UTCtime* time) {
    if (!text || !time) return;
    const std::optional<int> minutes = vel::zone_minutes(text);
    time->zone = minutes.value_or(0);
    time->flags = minutes ? time->flags | vel::kZoneGiven : time->flags & ~vel::kZoneGiven;
}

}  // extern "C"
