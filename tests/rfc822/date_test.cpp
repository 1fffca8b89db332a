#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "frame/owned.h"
#include "tests/support/fixture.h"
#include "vel/rfc822.h"

namespace vel::test {
namespace {

using Parser = int(const char*, UTCtime**);

COwned<UTCtime> parse(Parser* parser, std::string_view text) {
    UTCtime* time = nullptr;
    const int result = parser(exact(text).get(), &time);
    EXPECT_EQ(result, time != nullptr) << text;
    return COwned<UTCtime>(time);
}

// "1999-2-1 10:20:0 -300 3": zone and flags at the end; empty for a text that is no date.
std::string fields(const UTCtime* t) {
    if (!t) return {};
    char text[128];
    std::snprintf(text, sizeof text, "%d-%d-%d %d:%d:%d %d %d%s", t->year, t->month, t->day, t->hour, t->minute,
                  t->second, t->zone, t->flags, t->spare ? " spare" : "");
    return text;
}

std::string formatted(UTCtime time) {
    const auto output = std::make_unique<char[]>(64);
    return UTC2rfc(&time, output.get()) ? output.get() : "refused";
}

class Date : public VelTest {};

struct Case {
    const char* text;
    const char* fields;
    const char* formatted = "";
    const char* name = "";
};

constexpr Case kRfc822[] = {
    {"Tue, 1 Jul 2003 10:52:37 +0200", "2003-7-1 10:52:37 120 3", "Tue, 1 Jul 2003 10:52:37 +0200"},
    {"Mon, 1 Feb 99 10:20 EST", "1999-2-1 10:20:0 -300 1", "Mon, 1 Feb 1999 10:20 -0500", "kept_weekday_is_computed"},
    {"Nonsense,. 1 Feb 99 10:20 EST", "1999-2-1 10:20:0 -300 1", "Mon, 1 Feb 1999 10:20 -0500",
     "kept_wrong_weekday_is_not_noticed"},
    {"Sat 1 Jan 00 1", "2000-1-1 1:0:0 0 0", "Sat, 1 Jan 2000 01:00 +0000"},
    {"Sun,\r\n\t29 \t February\v2004\r\n 23 : 59 :59 +1300", "2004-2-29 23:0:0 0 0", "Sun, 29 Feb 2004 23:00 +0000"},
    {"29 Feb 2004 23 :59 :58Z", "2004-2-29 23:59:58 0 3", "Sun, 29 Feb 2004 23:59:58 +0000"},
    {"Fri, 1Aug1997 1:2:3GMT", "1997-8-1 1:2:3 0 3", "Fri, 1 Aug 1997 01:02:03 +0000"},
    {"1 Aug 1997 1:2 -0130", "1997-8-1 1:2:0 -90 1", "Fri, 1 Aug 1997 01:02 -0130"},
    {"1 Aug 37", "2037-8-1 0:0:0 0 0", "Sat, 1 Aug 2037 00:00 +0000"},
    {"1 Aug 099", "1999-8-1 0:0:0 0 0", "Sun, 1 Aug 1999 00:00 +0000"},
    {"1 Aug 1999 10:", "1999-8-1 10:0:0 0 0", "Sun, 1 Aug 1999 10:00 +0000", "kept_ends_early"},
    {"1 Aug 1999 10:11:", "1999-8-1 10:11:0 0 2", "Sun, 1 Aug 1999 10:11:00 +0000"},
    {"1 aug 1999", "", "", "kept_lower_case_month"},
    {"1 AUG 1999", "", "", "kept_upper_case_month"},
    {"(x) 1 Aug 1999", "", "", "kept_comment"},
};

constexpr const char* kNoRfc822 =
    "1 Aug 38|1 Aug 79|1 Aug 100|1 Aug 1979|1 Aug 2038|1 Aug 4294969295|1 Aug 99999999999999999999999999999999999999|"
    "0 Aug 1999|31 Apr 1999|29 Feb 1999|30 Feb 2000|1 Aug 1999 24:00|1 Aug 1999 23:60|1 Aug 1999 23:59:60|1 Au 1999|"
    "1 08 1999|1-Aug-1999|Fri Aug 1 10:20:30 1999|Fri,|Fri, 1|Fri, 1 Aug||\xff\xfe, 1 Aug 1999";

// The tests' zone is five hours west, and has daylight saving time.
constexpr Case kCtime[] = {
    {"Wed Jun 30 21:49:08 1993\n", "1993-6-30 21:49:8 -300 3"},
    {"Fri Jan  1 01:02:03 1993", "1993-1-1 1:2:3 -300 3", "", "kept_local_time_is_standard_time"},
    {"Jun 30 21:49:08 PDT 1993", "1993-6-30 21:49:8 -420 3"},
    {"Wed Jun 30 21:49:08 EST5 1993", "2005-6-30 21:49:8 -300 3"},
    {"Wed Jun 30 21:49:08 GMT 1993", "1993-6-30 21:49:8 -300 3", "", "kept_offset_0_is_local"},
    {"Wed Jun 30 21:49:08 CEST 1993", "1993-6-30 21:49:8 -300 3", "", "kept_unknown_name_is_local"},
};

constexpr const char* kNoCtime =
    "30 Jun 21:49:08 1993|Wed Jun 30 21:49:08|Wed Jun 30 21:49:08 1979|Thu Jun 31 21:49:08 1993|"
    "Wed Jun 30 24:49:08 1993|Wed, 30 Jun 1993 21:49:08|Wed|";

TEST_F(Date, parses_both_layouts) {
    for (const Case& c : kRfc822) {
        const auto time = parse(rfc2UTC, c.text);
        EXPECT_EQ(fields(time.get()), c.fields) << c.name << c.text;
        EXPECT_EQ(time ? formatted(*time) : "", c.formatted) << c.name << c.text;
    }
    for (const Case& c : kCtime) EXPECT_EQ(fields(parse(ctime2UTC, c.text).get()), c.fields) << c.name << c.text;
    for (const std::string& text : split(kNoRfc822)) EXPECT_FALSE(parse(rfc2UTC, text)) << text;
    for (const std::string& text : split(kNoCtime)) EXPECT_FALSE(parse(ctime2UTC, text)) << text;
    EXPECT_TRUE(take_log().empty());
}

TEST_F(Date, null_arguments_are_refused) {
    UTCtime* time = reinterpret_cast<UTCtime*>(this);
    EXPECT_EQ(rfc2UTC(nullptr, &time), 0);
    EXPECT_EQ(time, nullptr);
    EXPECT_EQ(rfc2UTC("1 Aug 1999", nullptr), 0);
    char output[64] = "x";
    EXPECT_EQ(UTC2rfc(nullptr, output), 0);
    EXPECT_STREQ(output, "");
    UTCtime now{1999, 8, 1, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(UTC2rfc(&now, nullptr), 0);
    EXPECT_EQ(time_t2rfc822date(0, nullptr), -1);
    EXPECT_EQ(makewkday(nullptr), -1);
}

TEST_F(Date, completes_years_of_two_digits_and_logs_it) {
    for (const auto& [given, completed] : {std::pair(5, "2005"), {80, "1980"}}) {
        UTCtime time{given, 8, 1, 0, 0, 0, 0, 0, 0};
        char output[64];
        EXPECT_EQ(UTC2rfc(&time, output), 1);
        EXPECT_EQ(std::to_string(time.year), completed);
        EXPECT_THAT(output, testing::HasSubstr(completed));
        const std::string line = "Received year value " + std::to_string(given) + ".  Changing it to ";
        EXPECT_THAT(take_log(), testing::ElementsAre(LogLine{6, "ParseDate", line + completed + "."}));
    }
}

TEST_F(Date, kept_another_year_is_refused_though_the_log_promises_the_current_one) {
    for (const int year : {2040, 38, 79, 100, 1979, -1}) {
        EXPECT_EQ(formatted({year, 8, 1, 0, 0, 0, 0, 0, 0}), "refused") << year;
        const std::string line = "Received invalid year value " + std::to_string(year) + ".  Use current year instead.";
        EXPECT_THAT(take_log(), testing::ElementsAre(LogLine{6, "ParseDate", line}));
    }
    for (const int month : {0, 13, INT_MIN, INT_MAX})
        EXPECT_EQ(formatted({1999, month, 1, 0, 0, 0, 0, 0, 0}), "refused");
    EXPECT_TRUE(take_log().empty());
}

TEST_F(Date, a_zone_without_its_flag_is_not_written) {
    EXPECT_EQ(formatted({1999, 8, 1, 1, 2, 3, 0, -90, 2}), "Sun, 1 Aug 1999 01:02:03 +0000");
    EXPECT_EQ(formatted({1999, 8, 1, 1, 2, 3, 0, -1, 1}), "Sun, 1 Aug 1999 01:02 -0001");
}

TEST_F(Date, a_record_of_any_numbers_is_cut_at_63_characters) {
    const UTCtime wide{1999, 8, INT_MIN, INT_MIN, INT_MIN, INT_MIN, 0, INT_MIN, 3};
    EXPECT_EQ(formatted(wide).size(), 63u);
    EXPECT_EQ(formatted(wide).substr(3), ", -2147483648 Aug 1999 -2147483648:-2147483648:-2147483648 -");
}

TEST_F(Date, weekdays_agree_with_the_calendar_of_the_language) {
    using std::chrono::days, std::chrono::sys_days, std::chrono::year_month_day, std::chrono::weekday;
    using namespace std::chrono_literals;
    for (sys_days day = 1753y / 1 / 1; day <= sys_days(2400y / 12 / 31); day += days(1)) {
        const year_month_day date(day);
        UTCtime time{};
        time.year = int(date.year());
        time.month = static_cast<int>(unsigned(date.month()));
        time.day = static_cast<int>(unsigned(date.day()));
        ASSERT_EQ(makewkday(&time), static_cast<int>((weekday(day) - std::chrono::Saturday).count())) << fields(&time);
    }
}

// Until 1752 those of the Julian calendar.
TEST_F(Date, weekdays_of_other_years) {
    const std::pair<UTCtime, int> rows[] = {{{1752, 12, 31, 0, 0, 0, 0, 0, 0}, 5},
                                            {{0, 1, 1, 0, 0, 0, 0, 0, 0}, 5},
                                            {{-5, 1, 1, 0, 0, 0, 0, 0, 0}, 6},
                                            {{1, 13, 1, 0, 0, 0, 0, 0, 0}, 1},
                                            {{1999, INT_MIN, 0, 0, 0, 0, 0, 0, 0}, 5}};
    for (const auto& [time, weekday] : rows) EXPECT_EQ(makewkday(&time), weekday) << fields(&time);
    for (const int year : {INT_MIN, INT_MAX}) {
        for (const int other : {INT_MIN, INT_MAX}) {
            const UTCtime time{year, other, other, 0, 0, 0, 0, 0, 0};
            EXPECT_THAT(makewkday(&time), testing::AllOf(testing::Ge(0), testing::Le(6)));
        }
    }
}

struct Now {
    const char* zone;
    time_t time;
    const char* expected;  // empty: refused
    const char* name = "";
};

constexpr Now kNow[] = {
    {"EST5EDT", 917882430, "Mon, 1 Feb 1999 10:20:30 -0500"},
    {"EST5EDT", 933517230, "Sun, 1 Aug 1999 10:20:30 -0400"},
    {"UTC0", 0, "Thu, 1 Jan 1970 00:00:00 +0000"},
    {"IST-5:30", 0, "Thu, 1 Jan 1970 05:30:00 +0530"},
    {"NST3:30", 0, "Wed, 31 Dec 1969 20:30:00 -0330"},
    {"NZST-12NZDT,0/0,364/0", 86400 * 30, "Sat, 31 Jan 1970 13:00:00 -1100", "kept_summer_beyond_twelve_hours_east"},
    {"LHST-10:30LHDT-11,0/0,364/0", 86400 * 30, "Sat, 31 Jan 1970 11:00:00 +1130", "kept_summer_is_one_hour"},
#if __SIZEOF_POINTER__ == 8
    {"UTC0", 253402300799, "Fri, 31 Dec 9999 23:59:59 +0000"},
    {"UTC0", 253402300800, ""},
    {"UTC0", LONG_MAX, ""},
#endif
};

TEST_F(Date, writes_local_time) {
    const std::string zone_of_the_tests = std::getenv("TZ");
    for (const Now& c : kNow) {
        ::setenv("TZ", c.zone, 1);  // without tzset: the date and the offset must both follow TZ by themselves
        const auto output = std::make_unique<char[]>(64);
        EXPECT_EQ(time_t2rfc822date(c.time, output.get()), *c.expected ? 0 : -1) << c.name << c.zone;
        EXPECT_STREQ(output.get(), c.expected) << c.name << c.zone;
    }
    ::setenv("TZ", zone_of_the_tests.c_str(), 1);
    ::tzset();
}

}  // namespace
}  // namespace vel::test
