#include "rfc822/zone.h"

#include <cstdlib>
#include <sstream>

#include "tests/support/fixture.h"
#include "vel/rfc822.h"

namespace vel::test {
namespace {

constexpr char kRows[] =
    "A -100 AHST -1000 AT -200 AST -400 B -200 BST 100 BT -1100 C -300 CAT -1000 CCT 800 CDT -500 CET 100 "
    "CST -600 D -400 E -500 EDT -400 EET 200 EST -500 F -600 G -700 GMT 0 GST 1000 H -800 HST -1030 I -900 "
    "IDLE 1200 IDLW -1200 IST 530 IT 300 JST 900 JT 730 K -1000 L -1100 M -1200 MDT -600 MET 100 MST -700 "
    "MT 830 N 100 NFT -330 NST 630 NT -1100 NZT 1130 O 200 P 300 PDT -700 PST -800 Q 400 R 500 S 600 "
    "SAST 930 SST 700 T 700 U 800 UT 0 V 900 W 1000 WAT -100 WDT 100 WET 0 X 1100 Y 1200 YST -900 Z 0";

// Every row but AT's is found by its name, and the minutes count eastward whatever the sign of the hours.
TEST(Zone, kept_rows_hold_their_values_and_all_but_AT_are_found) {
    std::istringstream rows(kRows);
    std::string name;
    int hhmm = 0;
    int row = 0;
    for (; rows >> name >> hhmm; ++row) {
        EXPECT_EQ(name, zone_tbl[row].keyword);
        EXPECT_EQ(hhmm, zone_tbl[row].code) << name;
        const int minutes = hhmm / 100 * 60 + std::abs(hhmm) % 100;
        EXPECT_EQ(GetZoneInt(name.c_str()), name == "AT" ? -1 : minutes) << name;
    }
    EXPECT_EQ(row, 64);
}

struct Case {
    const char* text;
    int minutes;
    int flag;
    const char* name = "";
};

constexpr Case kCases[] = {
    {"+0530", 330, 1},
    {" \t\r\n-0830 (PST)", -510, 1},
    {"GMT(x)", 0, 1},
    {"HST", -570, 1, "kept_half_hours_west_count_eastward"},
    {"NFT", -150, 1, "kept_half_hours_of_NFT_too"},
    {"-0001", -1, 1},
    {"+1a::", 600 + 49 * 60 + 10 * 10 + 10, 1, "kept_digits_are_not_checked"},
    {"-\xff\xff\xff\xff", 671 * 49, 1, "kept_bytes_above_127_too"},
    {"-", 0, 1},
    {"est", -1, 0},
    {"UTC", -1, 0},
    {"ESTX", -1, 0},
    {"0500", -1, 0},
    {"", -1, 0},
};

TEST(Zone, reads_names_and_offsets) {
    for (const Case& c : kCases) {
        const auto text = exact(c.text);
        EXPECT_EQ(GetZoneInt(text.get()), c.minutes) << c.name << c.text;
        UTCtime time{1999, 1, 1, 0, 0, 0, 0, 77, 3};
        getzone(text.get(), &time);
        EXPECT_EQ(time.zone, c.flag ? c.minutes : 0) << c.name << c.text;
        EXPECT_EQ(time.flags, 2 | c.flag) << c.name << c.text;
    }
}

TEST(Zone, null_is_no_zone) {
    EXPECT_EQ(GetZoneInt(nullptr), -1);
    UTCtime time{};
    getzone(nullptr, &time);
    getzone("EST", nullptr);
    EXPECT_EQ(time.flags, 0);
}

}  // namespace
}  // namespace vel::test
