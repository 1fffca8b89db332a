// What a parse gives to no entity, and which fields a parse refuses.
#include <nlohmann/json.hpp>

#include "tests/tools/run_vel.h"
#include "tools/io/input.h"
#include "tools/io/line_numbers.h"
#include "tools/io/private_copy.h"
#include "tools/io/scratch.h"
#include "tools/message/refused_fields.h"
#include "tools/message/removed_ranges.h"
#include "tools/message/uncovered.h"

namespace vel::command {
namespace {

using test::crlf;

class OffsetTest : public test::VelTest {
  protected:
    // The texts of ranges, "|" behind each.
    static std::string texts_of(const std::vector<Range>& ranges, const std::string& message) {
        std::string texts;
        for (const Range& range : ranges) texts += message.substr(range.start, range.end - range.start) + "|";
        return texts;
    }

    std::string lost(const std::string& message) {
        const std::string path = file("m.eml", message);
        mime_msg_pool* raw = nullptr;
        MimeParseMessage(path.c_str(), 1, &raw);
        take_log();
        const Pool pool(raw);
        return pool ? texts_of(uncovered_ranges(*pool, Tree(*pool), path), message) : "refused";
    }
};

const std::string kHead = "MIME-Version: 1.0\nContent-Type: multipart/mixed; boundary=outer\n\npreamble\n";
const std::string kInner = "--outer\nContent-Type: multipart/mixed; boundary=inner\n\n--inner\n\nfirst\n";

struct Row {
    std::string message;
    std::string lost;  // the ranges, "|" behind each
};

TEST_F(OffsetTest, OnlyPartsThatTheParserDropsAreUncovered) {
    const std::string nested = "--outer\nContent-Type: multipart/mixed; boundary=";
    const std::vector<Row> rows{
        {"Subject: x\n", ""},
        {"MIME-Version: 1.0\n\nbody", ""},
        {kHead + "--outer\n\none\n--outer\n\ntwo\n--outer--\nepilogue\n", ""},
        {kHead + "--outer\n--outer\n\n--outer\n\n\n--outer--", ""},
        {kHead + "--outer\n\none\n--outer\nX: y\n\ntwo\nthree", "X: y\n\ntwo\nthree|"},
        {kHead + "--outer\n\none\n--outer\nX: y", "X: y|"},
        {kHead + "--outer\n\none\n--outer\n", ""},
        {kHead + "--outer--\nepilogue\n", "preamble\n|"},
        {kHead.substr(0, kHead.find("preamble")) + "\n--outer--\n", ""},
        // Inner parts swallow outer ones.
        {kHead + kInner + "--inner\n\nsecond\n--outer\n\nthird\n--outer--\nend", "\nsecond\n|\nthird\n|"},
        {kHead + kInner + "--inner--\nepilogue\n--outer\n\nlost", "\nlost|"},
        // Blanks behind a closing delimiter end the parse.
        {kHead + nested + "middle\n\n--middle\n" + kInner.substr(8) +
             "--inner--\n--middle-- \nepilogue\n--outer \n\nlost\n--outer\n\nlost too\n--outer-- \n",
         "\nlost\n|\nlost too\n|"},
        // A boundary that is used on two levels.
        {kHead + nested +
             "inner\n\n--inner\n\none\n--inner\nContent-Type: multipart/mixed; boundary=inner\n\n"
             "--inner\n\ntwo\n--inner--\n--inner\n\nlost\n--inner--\n--outer\n\nthree\n--outer--\n",
         "\nlost\n|"},
        {kHead + "--outer\n\none\n--outer--\nend\n--outer\n\nmore\n", "\nmore\n|"},
        {kHead + "--outerX\n\none\n--outer lost?\n\ntwo", "\ntwo|"},
        {kHead + "--outer\nContent-Type: message/rfc822\n\nSubject: x\n\nbody", ""},
        {kHead + "--outer\n\nbegin 644 x\n`\nend\n--outer\n\ntwo", "\ntwo|"},
    };
    for (const Row& row : rows) EXPECT_EQ(lost(crlf(row.message)), crlf(row.lost)) << row.message;
}

TEST_F(OffsetTest, RefusedFieldsAreFoundWithTheirContinuation) {
    const std::string too_long = "Content-ID: " + std::string(3000, 'a') + "\n b\n";  // for the line reader
    const std::vector<Row> rows{
        {kHead + "--outer\nContent-ID: <a@b>\n\nContent-ID: none\n--outer--\nContent-ID: none\n", ""},
        {"MIME-Version: 1.0\nContent-Type: text/plain; x\n y\n\tz\nX: y\n\nbody\n",
         "Content-Type: text/plain; x\n y\n\tz\n|"},
        {kHead + "--outer\ncontent-id: a\n\none\n--outer\nX: y\nContent-Transfer-Encoding: a b\n\ntwo\n--outer--\n",
         "content-id: a\n|Content-Transfer-Encoding: a b\n|"},
        {kHead + "--outer\nContent-Type: message/rfc822\n\nContent-ID: a\n\nContent-ID: b\n--outer--\n",
         "Content-ID: a\n|"},
        {kHead + "--outerX\nContent-ID: a\n\n--outerY\nContent-ID: b\n\n--outer--Z\nContent-ID: c\n",
         "Content-ID: a\n|Content-ID: b\n|"},
        // A multipart that never begins.
        {kHead + "--outer\nContent-Type: multipart/mixed; boundary=inner\nContent-ID: a\n\n--outer\nContent-ID: "
                 "b\n\n--outer--\n",
         "Content-Type: multipart/mixed; boundary=inner\n|Content-ID: a\n|Content-ID: b\n|"},
        {"MIME-Version: 1.0\nContent-ID: a", "Content-ID: a|"},
        {too_long + "X: y\n\n", too_long + "|"},
    };
    for (const Row& row : rows) {
        const std::string message = crlf(row.message);
        Journal journal;
        const auto found = refused_ranges(troubled_fields(file("m.eml", message), true, journal).kept);
        EXPECT_EQ(texts_of(found, message), crlf(row.lost)) << row.message;
    }
}

TEST_F(OffsetTest, FieldsThatAreNotKeptAreCounted) {
    std::string message = "MIME-Version: 1.0\r\n";
    for (std::size_t i = 0; i < kMostTroubledFields + 7; ++i) message += "Content-ID: a\r\n";
    Journal journal;
    const TroubledFields found = troubled_fields(file("m.eml", message + "\r\n"), true, journal);
    EXPECT_EQ(found.kept.size(), kMostTroubledFields);
    EXPECT_EQ(found.not_kept, 7u);
}

// Fields are taken away one after the other, in one copy or in copies of copies.
TEST_F(OffsetTest, OffsetsOfACopyLeadBackToTheFile) {
    const std::string text = "0123456789abcdefghij";
    const std::vector<std::vector<std::vector<Range>>> rows{
        {},
        {{{0, 3}}},
        {{{2, 5}, {5, 7}, {19, 20}}},
        {{{4, 6}, {10, 12}}, {{0, 1}, {3, 6}}, {{7, 8}}},
    };
    for (const auto& removals : rows) {
        std::string copy = text;
        RemovedRanges removed;
        for (const std::vector<Range>& ranges : removals) {
            removed.remove(ranges);
            for (auto range = ranges.rbegin(); range != ranges.rend(); ++range) {
                copy.erase(range->start, range->end - range->start);
            }
        }
        std::string back;
        for (uint32_t i = 0; i < copy.size(); ++i) back += text[removed.in_file(i)];
        EXPECT_EQ(back, copy);
    }
}

TEST_F(OffsetTest, LinesAreCountedFromOne) {
    const std::string text = "a\nb\n" + std::string(70000, 'x') + "\n\nend";
    const auto last = static_cast<uint32_t>(text.size());
    const std::vector<uint32_t> offsets{last - 1, 0, 1, 2, 70003, 70004, 70005, last + 9, 3};
    EXPECT_EQ(line_numbers(file("m.eml", text), offsets), (std::vector<uint64_t>{5, 1, 1, 2, 3, 3, 4, 5, 2}));
    EXPECT_THAT(line_numbers("missing", {}), testing::IsEmpty());
}

TEST_F(OffsetTest, CopiesLeaveOutExactlyTheRanges) {
    Scratch scratch;
    std::string text;
    for (int i = 0; i < 40000; ++i) text += std::to_string(i) + ",";
    const std::string path = file("m.eml", text);
    const std::vector<Range> ranges{{0, 3}, {10, 10}, {70000, 140000}, {150000, 150001}};
    std::string expected = text.substr(3, 70000 - 3) + text.substr(140000, 10000) + text.substr(150001) + "end";
    EXPECT_EQ(content(copy_without(ranges, path, "end", scratch).path()), expected);
    EXPECT_EQ(content(copy_range({65530, 200000}, path, scratch).path()), text.substr(65530, 200000 - 65530));
}

TEST_F(OffsetTest, LineEndsAreJudgedByTheHeaderBlock) {
    const std::vector<std::pair<std::string, bool>> rows{
        {"", false},
        {"A: b\r\nC: d\r\n\r\nbody\nbody\n", false},
        {"A: b\nC: d\n\nbody\r\n", true},
        {"A: b\r\nC: d\n\r\nbody\r\n", true},
        {"A: b\r\n\nbody", true},
        {"\r\nbody\n", false},
        {"A: " + std::string(200000, 'x'), false},
        {"A: b\r\n\r\r\nC\n", true},
    };
    for (const auto& [text, bare] : rows)
        EXPECT_EQ(has_bare_line_ends(file("m.eml", text)), bare) << text.substr(0, 40);
    Scratch scratch;
    const std::string pad(65535, 'x');  // a CR LF over the border of two blocks
    const std::string path = file("m.eml", pad + "\r\n\n\r\r\na\n\r");
    EXPECT_EQ(content(copy_with_line_ends(path, scratch).path()), pad + "\r\n\r\n\r\r\na\r\n\r");
}

}  // namespace
}  // namespace vel::command
