#include <cstdio>

#include "tests/support/fixture.h"
#include "vel/rfc822.h"

namespace vel::test {
namespace {

class Mailbox : public VelTest {};

struct Case {
    const char* line;
    bool separator;
    const char* name = "";
};

constexpr Case kLines[] = {
    {"From a@b Mon Feb  1 10:20:30 1999\r\n", true},
    {"From a@b Mon Feb  1 10:20:30 1999", true},
    {"From a@b 10:20:30 199x", true, "kept_last_of_four_untested_without_line_end"},
    {"From a@b 10:20:30 199x\n", false},
    {"From a@b 10:20:30 199x\r\n", false},
    {"From a@b 10:20:30 1999xx\n", false, "kept_half_of_a_longer_word"},
    {"From a@b 10:20:30 19999xx", true},
    {"From :: 99", true},
    {"From :: 9", false},
    {"From a@b 10:20:30 1999 +0100\n", false},
    {"From a@b Mon Feb  1 10.20:30 1999\n", false},
    {"from a@b Mon Feb  1 10:20:30 1999\n", false},
    {"From: a@b:: 1999\n", false},
    {"From ", false},
    {"From \n", false},
    {"", false},
};

TEST_F(Mailbox, knows_separator_lines) {
    for (const Case& c : kLines) EXPECT_EQ(isNextMsgHeader(exact(c.line).get()), c.separator) << c.name << c.line;
    EXPECT_EQ(isNextMsgHeader(nullptr), 0);
}

// "result at position, lines", which are counted on from 10.
std::string skip(FILE* stream) {
    long position = 0;
    int lines = 10;
    const int result = ParseBody(stream, &position, &lines);
    EXPECT_EQ(std::ftell(stream), position);
    return std::to_string(result) + " at " + std::to_string(position) + ", " + std::to_string(lines);
}

TEST_F(Mailbox, skips_from_body_to_body) {
    const std::string separator = "From a@b Mon Feb  1 10:20:30 1999\r\n";  // 35 bytes
    const std::string bodies = "one\r\nFrom here on: no date\r\n\r\n" + separator + separator + "two\r\nlast";
    FILE* stream = std::fopen(file("mbox", bodies).c_str(), "rb");
    ASSERT_TRUE(stream);
    EXPECT_EQ(skip(stream), "1 at 30, 13");
    EXPECT_EQ(skip(stream), "1 at 30, 10") << "a separator ends an empty body at once";
    std::fseek(stream, 65, SEEK_SET);
    EXPECT_EQ(skip(stream), "1 at 65, 10");
    std::fseek(stream, 100, SEEK_SET);
    EXPECT_EQ(skip(stream), "-1 at 109, 12");
    EXPECT_EQ(ParseBody(stream, nullptr, nullptr), -1);
    std::fclose(stream);
    EXPECT_EQ(ParseBody(nullptr, nullptr, nullptr), -1);
}

TEST_F(Mailbox, kept_pieces_of_a_long_line_are_lines) {
    FILE* stream = std::fopen(file("mbox", std::string(2046, 'x') + "From :: 1999\n").c_str(), "rb");
    ASSERT_TRUE(stream);
    EXPECT_EQ(skip(stream), "1 at 2046, 12");
    std::fclose(stream);
}

}  // namespace
}  // namespace vel::test
