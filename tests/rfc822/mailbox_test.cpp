#include <cstdio>

#include "tests/support/fixture.h"
#include "vel/rfc822.h"

namespace vel::test {
namespace {

class Mailbox : public VelTest {};

struct Case {
    const char* name;
    const char* line;
    bool separator;
};

constexpr Case kLines[] = {
    {"line_feed", "From a@b Mon Feb  1 10:20:30 1999\n", true},
    {"crlf", "From a@b Mon Feb  1 10:20:30 1999\r\n", true},
    {"no_line_end", "From a@b Mon Feb  1 10:20:30 1999", true},
    {"kept_last_of_four_untested_without_line_end", "From a@b 10:20:30 199x", true},
    {"four_tested_before_a_line_end", "From a@b 10:20:30 199x\n", false},
    {"four_tested_before_crlf", "From a@b 10:20:30 199x\r\n", false},
    {"kept_half_of_a_longer_word", "From a@b 10:20:30 1999xx\n", false},
    {"five_of_seven", "From a@b 10:20:30 19999xx", true},
    {"two_digits", "From :: 99", true},
    {"one_digit", "From :: 9", false},
    {"one_digit_and_line_feed", "From :: 9\n", false},
    {"year_is_no_number", "From a@b 10:20:30 1x99\n", false},
    {"zone_behind_the_year", "From a@b 10:20:30 1999 +0100\n", false},
    {"blank_at_the_end", "From a@b 10:20:30 1999 \n", false},
    {"one_colon", "From a@b Mon Feb  1 10.20:30 1999\n", false},
    {"no_colon", "From a@b Mon Feb  1 1999\n", false},
    {"lower_case", "from a@b Mon Feb  1 10:20:30 1999\n", false},
    {"quoted", ">From a@b Mon Feb  1 10:20:30 1999\n", false},
    {"field", "From: a@b:: 1999\n", false},
    {"tab", "From\ta@b 10:20:30 1999\n", false},
    {"five_characters", "From ", false},
    {"six_characters", "From \n", false},
    {"empty", "", false},
};

TEST_F(Mailbox, knows_separator_lines) {
    for (const Case& c : kLines) EXPECT_EQ(isNextMsgHeader(exact(c.line).get()), c.separator) << c.name;
    EXPECT_EQ(isNextMsgHeader(nullptr), 0);
}

struct Body {
    int result;
    long position;
    int lines;
    bool operator==(const Body&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Body& body) {
    return out << body.result << " at " << body.position << ", " << body.lines << " lines";
}

Body skip(FILE* stream) {
    Body body{0, 0, 10};
    body.result = ParseBody(stream, &body.position, &body.lines);
    EXPECT_EQ(std::ftell(stream), body.position);
    return body;
}

TEST_F(Mailbox, skips_from_body_to_body) {
    const std::string separator = "From a@b Mon Feb  1 10:20:30 1999\r\n";
    const std::string first = "one\r\nFrom here on: no date\r\n\r\n";
    const std::string second = "two\r\nlast";
    const std::string path = file("mbox", first + separator + separator + second);
    FILE* stream = std::fopen(path.c_str(), "rb");
    ASSERT_TRUE(stream);
    const long at = static_cast<long>(first.size());
    const long next = at + static_cast<long>(separator.size());
    EXPECT_EQ(skip(stream), (Body{1, at, 13}));
    EXPECT_EQ(skip(stream), (Body{1, at, 10})) << "a separator ends an empty body at once";
    std::fseek(stream, next, SEEK_SET);
    EXPECT_EQ(skip(stream), (Body{1, next, 10}));
    std::fseek(stream, next + static_cast<long>(separator.size()), SEEK_SET);
    EXPECT_EQ(skip(stream), (Body{-1, next + static_cast<long>(separator.size() + second.size()), 12}));
    EXPECT_EQ(ParseBody(stream, nullptr, nullptr), -1);
    std::fclose(stream);
    EXPECT_EQ(ParseBody(nullptr, nullptr, nullptr), -1);
}

TEST_F(Mailbox, kept_pieces_of_a_long_line_are_lines) {
    const std::string piece(1023, 'x');
    FILE* stream = std::fopen(file("mbox", piece + piece + "From :: 1999\n").c_str(), "rb");
    ASSERT_TRUE(stream);
    EXPECT_EQ(skip(stream), (Body{1, 2046, 12}));
    std::fclose(stream);
}

}  // namespace
}  // namespace vel::test
