#include <string>
#include <thread>
#include <vector>

#include "tests/rfc822/waits_for.h"
#include "tests/support/fixture.h"
#include "vel/rfc822.h"

namespace vel::test {
namespace {

std::string shown(const recipient& record) {
    std::string line;
    for (const char* field : {record.canon, record.phrase, record.comment, record.local, record.domain}) {
        line += std::string(field) + '|';
    }
    return line + record.orig;
}

// "canon|phrase|comment|local|domain|orig" of each record.
std::vector<std::string> parsed(const std::string& text) {
    const auto input = exact(text);
    RecipTbl table{};
    const uint32_t count = ST_RecipParse(input.get(), &table, 1);
    std::vector<std::string> records;
    for (const recipient* record = table.first; record; record = record->next) records.push_back(shown(*record));
    EXPECT_EQ(count, records.size());
    Clear_RT(&table);
    return records;
}

struct Case {
    std::string text;
    std::vector<std::string> records;
};

void expect_parsed(const std::vector<Case>& cases) {
    for (const Case& row : cases) EXPECT_EQ(parsed(row.text), row.records) << row.text;
}

// The agreement with the reference shows the rest; these are what a reader looks up.
TEST(Address, forms) {
    const std::string c = "c@d|||c|d|c@d";
    expect_parsed({
        {"Sales Desk <sd@x.y>", {"sd@x.y|Sales Desk||sd|x.y|Sales Desk <sd@x.y>"}},
        {"\"D. E\"\t F<a@b>", {"a@b|\"D. E\" F||a|b|\"D. E\"\t F<a@b>"}},
        {"\"a b\"@c", {"\"a b\"@c|||\"a b\"|c|\"a b\"@c"}},
        {"J <@r:@s.t,@u:a@b>", {"<@r:@s.t,@u:a@b>|J||a|b|J <@r:@s.t,@u:a@b>"}},
        {"@r1:a@b", {"<@r1:a@b>|||a|b|@r1:a@b"}},
        {"a@[1.2, 3\\]].b", {"a@[1.2, 3\\]].b|||a|[1.2, 3\\]].b|a@[1.2, 3\\]].b"}},
        {"g h: a@b, Joe <c.f@d>;", {"g h: a@b, c.f@d;|Joe||c.f|d|g h: a@b, Joe <c.f@d>;"}},
        {"\v\f \r\n\tJ \r\n\t<a\v@\fb>\r\n", {"a@b|J||a|b|J \r\n\t<a\v@\fb>"}},
        {"\xe9\xff <a@\xe9>", {"a@\xe9|\xe9\xff||a|\xe9|\xe9\xff <a@\xe9>"}},
        {",, a@b ,\r\n,, c@d,, ", {"a@b|||a|b|a@b", c}},
        {"x@y \"z, z\" u, Joe Smith, X <x@y> z, x@ (y, z), <x@y, c@d", {c}},
        {":;<>@..[]()\\", {}},
        {" \r\n", {}},
        {"(x) a@b (y (\\)) \")\"z), c@d", {"a@b||y (\\)) \")\"z|a|b|(x) a@b (y (\\)) \")\"z)", c}},
        {"a@b (" + std::string(300, 'x') + ')',
         {"a@b||" + std::string(255, 'x') + "|a|b|a@b (" + std::string(300, 'x') + ')'}},
        {"a@b (open, c@d", {}},
        {"g: a@b, c@d (open", {"g: a@b|g||c|d|g: a@b, c@d (open"}},
        {std::string(255, 'x') + " (u, v)",
         {std::string(255, 'x') + "||u, v|" + std::string(255, 'x') + "||" + std::string(255, 'x') + " (u, v)"}},
        {std::string(256, 'x') + ", c@d", {c}},
    });
}

TEST(Address, kept_dots_before_the_at_sign_belong_to_the_atom) {
    expect_parsed(
        {{".first..last.@x.y", {".first..last.@x.y|||.first..last.|x.y|.first..last.@x.y"}}, {"\"a\".b@c", {}}});
}

TEST(Address, kept_parentheses_inside_an_atom_are_no_comment) {
    expect_parsed({{"a@b(Home)", {"a@b(Home)|||a|b(Home)|a@b(Home)"}}, {"a(b @c", {"a(b@c|||a(b|c|a(b @c"}}});
}

TEST(Address, kept_bracket_that_does_not_end_is_stepped_over) {
    expect_parsed({{"a@[1.2.3.4", {"1.2.3.4|||1.2.3.4||1.2.3.4"}}});
}

TEST(Address, kept_local_part_alone_is_an_address) {
    expect_parsed({{"postmaster, P <postmaster>",
                    {"postmaster|||postmaster||postmaster", "postmaster|P||postmaster||P <postmaster>"}},
                   {"g: a@b, <c.@d>;", {"g: a@b, c.@d;|g||c.|d|g: a@b, <c.@d>;"}},
                   {"<@r:a>", {"<@r:a>|||a|r|<@r:a>"}}});
}

TEST(Address, kept_semicolon_ends_a_mailbox_without_a_group) {
    expect_parsed({{"a@b; C <c@d>;", {"a@b|||a|b|a@b;", "c@d|C||c|d|C <c@d>;"}}, {"a; c@d", {}}});
}

TEST(Address, kept_empty_group_and_empty_brackets_are_no_addresses) {
    expect_parsed({{"undisclosed-recipients:;, <>, a@b", {"a@b|||a|b|a@b"}}});
}

// "g: " and 14 members of 15 characters are 239; one more, with its comma, would be 256.
TEST(Address, kept_members_behind_a_group_too_long_are_read_one_by_one) {
    const auto member = [](int number) { return "m" + std::to_string(number) + "@example.org"; };
    std::string text = "g: " + member(10);
    for (int number = 11; number < 40; ++number) text += ", " + member(number);
    const auto records = parsed(text + ";");
    ASSERT_EQ(records.size(), 15u);
    for (int i = 0; i < 15; ++i) {
        EXPECT_TRUE(records[static_cast<std::size_t>(i)].starts_with(member(25 + i) + "|")) << i;
    }
}

TEST(Address, kept_odd_number_of_quotes_refuses_the_list) {
    expect_parsed({{"a@b, \"c@d", {}}, {"a@b (don\"t)", {}}, {"a@b, x\\\"", {"a@b|||a|b|a@b", "x|||x||x"}}});
}

TEST(Address, kept_escaped_quotes_become_blanks) {
    expect_parsed(
        {{"\"a \\\"b\\\" c\" <d@e>", {"d@e|\"a   b   c\"||d|e|\"a   b   c\" <d@e>"}}, {"\"a\\\\\" b\" <d@e>", {}}});
}

TEST(Address, a_table_is_appended_to_or_emptied) {
    RecipTbl table{};
    EXPECT_EQ(ST_RecipParse(exact("a@b").get(), &table, 0), 1u);
    EXPECT_EQ(ST_RecipParse(exact("c@d, e@f").get(), &table, 0), 3u);
    for (const char* nothing : {"", "  ", "\"x"}) EXPECT_EQ(ST_RecipParse(exact(nothing).get(), &table, 0), 0u);
    EXPECT_EQ(ST_RecipParse(exact("x@").get(), &table, 0), 3u);
    ASSERT_EQ(table.count, 3u);
    EXPECT_EQ(std::string(table.first->next->canon) + table.last->canon, "c@de@f");
    recipient* const first = table.first;
    EXPECT_EQ(ST_RecipParse(nullptr, &table, 1), 0u);
    EXPECT_TRUE(!table.first && !table.last && table.count == 0);
    table.first = first;
    Clear_RT(&table);
    EXPECT_EQ(table.first, nullptr);
}

TEST(Address, fields_are_assigned_and_cleared) {
    recipient* const record = AllocateRecipient();
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(AssignRp("text", &record->orig), 1);
    EXPECT_EQ(AssignRp(record->orig + 2, &record->orig), 1);
    EXPECT_STREQ(record->orig, "xt");
    EXPECT_EQ(AssignRp(nullptr, &record->orig), 1);
    EXPECT_EQ(record->orig, nullptr);

    const auto text = exact(" a@b (c) x, d@e");
    EXPECT_EQ(ParseAddr(text.get(), record), text.get() + 10);  // the comma behind the junk
    EXPECT_EQ(record->canon, nullptr);
    EXPECT_EQ(ParseAddr(text.get() + 11, record), text.get() + 15);
    EXPECT_STREQ(record->canon, "d@e");
    recipient other{};
    record->next = &other;
    Clear_RP(record);
    EXPECT_TRUE(!record->canon && !record->local && !record->comment && record->next == &other);
    free(record);
}

// Each of these takes minutes where time is not proportional to the text.
TEST(Address, long_runs_of_anything_are_read_in_time) {
    constexpr uint32_t kMany = 300'000;
    constexpr std::pair<const char*, uint32_t> kRuns[] = {
        {",", 0},    {"[", 0},       {"[\\]", 1},     {"(", 0},        {" (", 0},           {"a@b (", 0},
        {"<(,", 0},  {")(", 0},      {"[]", 0},       {"\\", 0},       {"\\\"", 0},         {"\\\",", 0},
        {"\"\"", 0}, {":", 0},       {"<", 0},        {"x ", 0},       {". ", 0},           {"g:a@b,", 0},
        {"@a,", 0},  {"<a@[x],", 0}, {"a@b,", kMany}, {"a@b;", kMany}, {"a@b (c),", kMany},
    };
    for (const auto& [piece, records] : kRuns) {
        std::string text;
        for (uint32_t i = 0; i < kMany; ++i) text += piece;
        RecipTbl table{};
        EXPECT_EQ(ST_RecipParse(text.data(), &table, 1), records) << piece;
        Clear_RT(&table);
    }
}

class AddressThreads : public VelTest {
  protected:
    AddressThreads() { Init822Parser(); }
    ~AddressThreads() override { Terminate822Parser(); }
};

TEST_F(AddressThreads, the_parsers_lock_is_held_while_a_list_is_read) {
    RecipTbl* table = nullptr;
    expect_waits_for(csRecipParse, [&] { EXPECT_EQ(AddParse(exact("a@b").get(), &table), 1u); });
    expect_waits_for(csRecipParse, [&] { EXPECT_EQ(RecipParse(exact("c@d, e@f").get(), table, 0), 3u); });
    RecipTbl own{};
    EnterCriticalSection(&csRecipParse);
    std::thread([&] { EXPECT_EQ(ST_RecipParse(exact("x@y").get(), &own, 0), 1u); }).join();  // takes no lock
    LeaveCriticalSection(&csRecipParse);
    Clear_RT(&own);
    Clear_RT(table);
    free(table);
}

}  // namespace
}  // namespace vel::test
