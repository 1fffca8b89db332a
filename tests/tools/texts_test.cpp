// vel address and vel date, and the readers behind them.
#include <nlohmann/json.hpp>

#include "tests/tools/run_vel.h"
#include "tools/message/address_list.h"

namespace vel::command {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;

class AddressListTest : public test::VelTest {};

// What the library's own list parser takes, in canonical form.
std::vector<std::string> taken_by_library(std::string text) {
    std::vector<std::string> result;
    RecipTbl table{};
    RecipParse(text.data(), &table, 1);
    for (const recipient* r = table.first; r; r = r->next) result.emplace_back(r->canon);
    Clear_RT(&table);
    return result;
}

struct Taken {
    std::vector<std::string> addresses, left_out;
};

Taken taken_by_reader(const std::string& text) {
    Taken taken;
    AddressListReader reader(text);
    Recipient record;
    while (const auto stretch = reader.next(record.get())) {
        EXPECT_EQ(text.substr(stretch->start, stretch->text.size()), stretch->text);
        if (stretch->left_out) {
            taken.left_out.emplace_back(stretch->text);
        } else {
            taken.addresses.emplace_back(record.get().canon);
        }
    }
    return taken;
}

TEST_F(AddressListTest, TakesWhatTheLibraryTakes) {
    const std::vector<std::string_view> pieces{"a", "@", ",", ";",  ":", "<",   ">",  "\"",       "(",       ")",
                                               "[", "]", " ", "\\", ".", "x@y", "g:", "<@r:u@h>", "\"q, q\""};
    test::Random random(822);
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        const uint32_t kinds = 2 + random.below(static_cast<uint32_t>(pieces.size()) - 1);  // few: long addresses
        for (uint32_t n = random.below(200); n > 0; --n) text += pieces[random.below(kinds)];
        ASSERT_EQ(taken_by_reader(text).addresses, taken_by_library(text)) << text;
    }
    // The end of what the parser is shown at a time, in every place of an address.
    for (std::size_t n = 0; n < 600; ++n) {
        const std::string word(n, 'a');
        for (const std::string& text : {"x [" + word + "\\, b@c" + std::string(600, 'd') + "], e@f",
                                        word + "@" + word + " (" + word + ") , \"" + word + "\\\"\" <g@h>, i"}) {
            ASSERT_EQ(taken_by_reader(text).addresses, taken_by_library(text)) << text;
        }
    }
}

TEST_F(AddressListTest, ShowsWhatIsLeftOut) {
    using Texts = std::vector<std::string>;
    const std::vector<std::pair<std::string, Texts>> rows{
        {" , ,, \t", {}},
        {"two words, a@b", {"two words"}},
        {"undisclosed-recipients:;", {"undisclosed-recipients:;"}},
        {"a@b, <>, c@d (no end, e@f", {"<>", "c@d (no end, e@f"}},
        {"a@b, \"open", {"a@b, \"open"}},
        {std::string("a@b\0c@d", 7), {std::string("\0c@d", 4)}},
    };
    for (const auto& [text, left_out] : rows) EXPECT_EQ(taken_by_reader(text).left_out, left_out) << text;
}

class TextVerbsTest : public test::CommandTest {};

TEST_F(TextVerbsTest, ExplainAddresses) {
    const test::Ended ended =
        run({"address", "--json", "-", "Ann Lee <ann@a.b> (x), T: c@d, e@f;, <@r:g@h>, two words", ""}, "i\r\n\n");
    EXPECT_EQ(ended.exit, 65);
    EXPECT_EQ(
        ended.out,
        R"({"text":"i","items":[{"kind":"mailbox","canonical":"i","phrase":null,"comment":null,"local":"i",)"
        R"("domain":null,"text":"i","start":0,"end":1,"left_out":null}],"count":1})"
        "\n"
        R"({"text":"","items":[],"count":0})"
        "\n"
        R"({"text":"Ann Lee <ann@a.b> (x), T: c@d, e@f;, <@r:g@h>, two words","items":[)"
        R"({"kind":"mailbox","canonical":"ann@a.b","phrase":"Ann Lee","comment":"x","local":"ann","domain":"a.b",)"
        R"j("text":"Ann Lee <ann@a.b> (x)","start":0,"end":21,"left_out":null},)j"
        R"({"kind":"group","canonical":"T: c@d, e@f;","phrase":"T","comment":null,"local":"e","domain":"f",)"
        R"("text":"T: c@d, e@f;","start":23,"end":35,"left_out":null},)"
        R"({"kind":"source route","canonical":"<@r:g@h>","phrase":null,"comment":null,"local":"g","domain":"h",)"
        R"("text":"<@r:g@h>","start":37,"end":45,"left_out":null},)"
        R"({"text":"two words","start":47,"end":56,"left_out":"it is no address"}],"count":3})"
        "\n"
        R"({"text":"","items":[],"count":0})"
        "\n");
    EXPECT_EQ(run({"address", "a@b"}).out, "mailbox     a@b\nlocal part  a\ndomain      b\n");
    EXPECT_EQ(run({"address", "a@b"}).exit, 0);
    EXPECT_EQ(run({"address", "", "a@\x1b"}).err, "vel: no address in \"\"\n");
}

struct DateRow {
    std::string text;
    Json layout, zone, source, weekday_in_text;
    std::string normalized, utc;
    int64_t seconds;
};

TEST_F(TextVerbsTest, ExplainDates) {
    const std::vector<DateRow> rows{
        {"TUESDAY 1 Feb 99", "RFC 822", nullptr, nullptr, "Tue", "Mon, 1 Feb 1999 00:00 +0000", "1999-02-01T00:00:00Z",
         917827200},
        {"31 Dec 1980 23:30 -0100", "RFC 822", -60, "text", nullptr, "Wed, 31 Dec 1980 23:30 -0100",
         "1981-01-01T00:30:00Z", 347157000},
        {"29 Feb 2036 0:0:1 +1400", "RFC 822", 840, "text", nullptr, "Fri, 29 Feb 2036 00:00:01 +1400",
         "2036-02-28T10:00:01Z", 2087805601},
        {"Mon Feb  1 10:20:30 JST 1999", "ctime", 540, "text", "Mon", "Mon, 1 Feb 1999 10:20:30 +0900",
         "1999-02-01T01:20:30Z", 917832030},
        // Kept by the library: the system's standard time, Pacific by default.
        {"Mon Feb  1 10:20:30 GMT 1999", "ctime", -480, "system", "Mon", "Mon, 1 Feb 1999 10:20:30 -0800",
         "1999-02-01T18:20:30Z", 917893230},
    };
    for (const DateRow& row : rows) {
        const test::Ended ended = run({"date", "--json", row.text});
        ASSERT_EQ(ended.exit, 0) << row.text;
        Json expected{{"layout", row.layout},
                      {"zone", row.zone},
                      {"zone_source", row.source},
                      {"weekday_in_text", row.weekday_in_text},
                      {"normalized", row.normalized},
                      {"utc", row.utc},
                      {"seconds_since_1970", row.seconds}};
        const Json json = Json::parse(ended.out);
        for (const auto& [key, value] : expected.items()) EXPECT_EQ(json[key], value) << row.text << ' ' << key;
    }
    const test::Ended lines = run({"date", "-"}, "Tue, 1 Feb 1999 10:20\r\n\nsoon");
    EXPECT_EQ(lines.exit, 65);
    EXPECT_THAT(lines.out,
                HasSubstr("\nzone        not given, counts as UTC\nweekday     Mon, but the text says Tue\n"));
    EXPECT_EQ(lines.err, "vel: no date: \"\"\nvel: no date: \"soon\"\n");
}

}  // namespace
}  // namespace vel::command
