// Addresses, subject and other header lines.
#include <set>

#include "build/header_value.h"
#include "frame/owned.h"
#include "tests/build/built.h"

namespace vel::test {
namespace {

class HeadingTest : public BuildTest {
  protected:
    // The header lines alone: those of a message whose body file is empty.
    std::string lines(Values values) {
        values.encoding = "7bit";
        values.flags = 2;
        const std::string text = taken(build(values, file("body", "")));
        EXPECT_TRUE(text.ends_with("\r\n")) << text;
        return text.substr(0, text.size() - 2);
    }
};

TEST_F(HeadingTest, lines_stand_in_order_and_missing_ones_are_left_out) {
    EXPECT_EQ(
        lines({.from = "me",
               .to = "a@b.c|d@e.f",
               .subject = "Hello",
               .cc = "g@h.i",
               .bcc = "j@k.l",
               .extra = "X-A: b|y|Z: z\r\n|N: n\n"}),
        crlf("From: me\nTo: a@b.c, d@e.f\nCc: g@h.i\nBcc: j@k.l\nSubject: Hello\nX-A: b\ny\nZ: z\n") + "N: n\n\r\n");
    EXPECT_EQ(lines({.from = "", .subject = "", .cc = "|a@b.c||d@e.f|", .extra = "|"}), "Cc: a@b.c, d@e.f\r\n");
    ms without_text{nullptr, nullptr};
    EXPECT_EQ(taken(MimeBuildMessageV2(nullptr, &without_text, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                       nullptr, nullptr, file("body", "x").c_str(), &without_text, 0)),
              "\r\nx");
}

TEST_F(HeadingTest, kept_a_chain_of_empty_entries_writes_a_line_end) {
    EXPECT_EQ(lines({.from = "a", .to = "|"}), "From: a\r\n\r\n");
}

TEST_F(HeadingTest, kept_columns_of_address_lines) {
    const std::string forty = std::string(36, 'x') + "@y.z";
    const std::string four = forty + "|" + forty + "|" + forty + "|" + forty;
    const std::string folded = forty + ", \r\n   " + forty + ", " + forty + ", \r\n   " + forty + "\r\n";
    EXPECT_EQ(lines({.to = four.c_str(), .bcc = four.c_str()}), "To: " + folded + "Bcc: " + folded);
    // An address fits when it ends in column 77, counted from 4.
    const std::string fits = std::string(69, 'x') + "@y.z";
    EXPECT_EQ(lines({.to = fits.c_str()}), "To: " + fits + "\r\n");
    EXPECT_EQ(lines({.to = ("x" + fits).c_str()}), "To: \r\n   x" + fits + "\r\n");
    // Behind one that began a line, it may have 72 characters.
    const std::string behind = "x" + fits + "|" + fits.substr(1);
    EXPECT_EQ(lines({.to = behind.c_str()}), "To: \r\n   x" + fits + ", " + fits.substr(1) + "\r\n");
    EXPECT_EQ(lines({.to = ("x" + fits + "|" + fits).c_str()}), "To: \r\n   x" + fits + ", \r\n   " + fits + "\r\n");
}

TEST_F(HeadingTest, kept_addresses_are_completed_by_their_text) {
    struct {
        const char* relay;
        const char* qualifies;
        const char* expected;
    } const rows[] = {
        {"", "", "joe@gw.corp, j.r@host.corp, a@h, b@x.y, Joe <joe>@gw.corp"},
        {"", "no", "joe@gw.corp, j.r@host, a@h, b@x.y, Joe <joe>@gw.corp"},
        {"relay", "YES", "joe@relay, j.r@host.corp, a@h, b@x.y, Joe <joe>@relay"},
    };
    for (const auto& row : rows) {
        set("Routing", "PrimaryRelayHostName", row.relay);
        set("Options", "QualifyRecipientHosts", row.qualifies);
        EXPECT_EQ(lines({.from = "joe", .to = "joe|j.r@host|a@h, b@x.y|Joe <joe>"}),
                  "From: joe\r\nTo: " + std::string(row.expected) + "\r\n");
    }
}

TEST_F(HeadingTest, values_have_encoded_words) {
    set("Gateway", "LocalCharSet", "iso-8859-1");
    EXPECT_EQ(lines({.from = "J\xf6rg <j@b.c>", .to = "J\xf6rg <j@b.c>", .subject = "J\xf6rg"}),
              crlf("From: =?iso-8859-1?Q?J=F6rg?= <j@b.c>\nTo: =?iso-8859-1?Q?J=F6rg?= <j@b.c>\n"
                   "Subject: =?iso-8859-1?Q?J=F6rg?=\n"));
}

TEST_F(HeadingTest, kept_a_value_goes_out_as_it_is_when_memory_is_short) {
    const std::string path = file("body", "");
    std::set<std::string> built;
    with_little_memory(1, [&] {
        built.insert(
            taken(build({.to = "joe", .subject = "\xe4", .parameters = "name=\xe4", .encoding = "7bit"}, path)));
    });
    const std::string type = "Content-type: application/x-unknown; name=";
    for (const std::string& line : {std::string("To: joe\r\n"), std::string("Subject: \xe4\r\n"), type + "\xe4\r\n"}) {
        EXPECT_THAT(built, testing::Contains(testing::HasSubstr(line)));
    }
    take_log();
}

TEST_F(HeadingTest, kept_subjects_are_not_converted_to_jis) {
    const char* const a = "\x82\xa0";  // one character of Shift-JIS
    set("Gateway", "LocalCharSet", "iso-2022-jp");
    EXPECT_EQ(lines({.from = a, .subject = a}), "From: \x1b$B$\"\x1b(J\r\nSubject: =?iso-2022-jp?Q?=82=A0?=\r\n");
    set("Options", "DisableJISinHeaders", "YES");
    EXPECT_EQ(lines({.from = a}), "From: =?iso-2022-jp?Q?=82=A0?=\r\n");
}

TEST_F(HeadingTest, kept_a_quoted_value_loses_its_last_character) {
    set("Gateway", "LocalCharSet", "l1");
    const std::pair<const char*, const char*> rows[] = {
        {"a=b", "a=\"b\""},
        {"a=\"b c\"", "a=\"b c\""},
        {"a=\"bcd", "a=\"bc\""},
        {"a=\"", "a=\"\""},
        {"a=", "a=\"\""},
        {"=b=c", "=\"b=c\""},
        {"a=b\"c\\d\r\n", "a=\"b\\\"c\\\\d\\\r\\\n\""},
        {"a=\xe4", "a=\"=?l1?Q?=E4?=\""},
        {"a", nullptr},
        {"", nullptr},
        {nullptr, nullptr},
    };
    for (const auto& [given, expected] : rows) {
        const COwned<char> made(process_param(given));
        EXPECT_STREQ(made.get(), expected);
    }
    EXPECT_EQ(processAddress(nullptr, 0, 0), nullptr);
}

}  // namespace
}  // namespace vel::test
