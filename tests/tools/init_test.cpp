// vel init.
#include "tests/tools/run_vel.h"
#include "tools/text/shell_word.h"

namespace vel::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class InitTest : public CommandTest {};

TEST_F(InitTest, MakesAPlaceThatNothingIsWrongWith) {
    EXPECT_EQ(shell("eval \"$(vel init \"my gate's\" --host gw --domain example.com 2> said)\" && cd / && "
                    "vel config > \"$HOME/shown\" && vel init \"$OSTRA_CONFIG_DIR\" 2>> \"$HOME/said\""),
              kCannotCreate);
    EXPECT_THAT(content((directory() / "said").string()), HasSubstr("ostra.ini: is there already"));
    const std::string shown = content((directory() / "shown").string());
    EXPECT_THAT(shown, HasSubstr("my gate's/queue    line 15"));
    EXPECT_THAT(shown, testing::Not(HasSubstr(": fault:")));
    EXPECT_TRUE(std::filesystem::exists(directory() / "my gate's/queue/queue.db"));
}

TEST_F(InitTest, LetsOneOfManyRunsMakeAPlace) {
    EXPECT_EQ(shell("for i in 1 2 3 4 5 6; do vel init place --host h.d 2>> said & done; wait\n"
                    "OSTRA_CONFIG_DIR=$PWD/place vel config > shown; test $? = 0 -a $(wc -l < said) = 5"),
              0);
}

TEST_F(InitTest, TakesTheZoneThatTheMachineHas) {
    const std::vector<std::pair<std::string, std::string>> rows{
        {"EST5EDT", "EST5EDT"}, {":Asia/Tokyo", "Asia/Tokyo"},   {"CET-1CEST,M3.5.0,M10.5.0/3", "xxx"},
        {"xxxlong", ""},        {"America/Sao_Paulo", "<-03>3"}, {"America/New_York", "xxx"},
    };
    if (!std::filesystem::exists("/usr/share/zoneinfo/Asia/Tokyo")) GTEST_SKIP() << "no zone files here";
    for (const auto& [zone, setting] : rows) {
        ASSERT_EQ(shell("TZ='" + zone + "' vel init --print x --host a.b > ini 2> said"), 0);
        const std::string expected = setting.empty() ? "TZ=xxxlong is no time zone" : "TimeZone = " + setting + "\n";
        EXPECT_THAT(content((directory() / (setting.empty() ? "said" : "ini")).string()), HasSubstr(expected)) << zone;
    }
}

TEST_F(InitTest, LeavesNothingWhereItFails) {
    struct Row {
        std::vector<std::string> arguments;
        int exit;
        std::string said;
    };
    file("taken", "");
    std::filesystem::create_symlink("nowhere", directory() / "link");
    std::filesystem::create_directories(directory() / "half/queue");
    file("half/queue/queue.db", "no database");
    const std::string here = directory().string();
    const std::vector<Row> rows{
        {{"init", here + "/taken"}, kCannotCreate, "taken: is not a directory"},
        {{"init", here + "/taken/deeper"}, kCannotCreate, "Not a directory"},
        {{"init", here + "/link"}, kCannotCreate, "link: is not a directory"},
        {{"init", here + "/new/" + std::string(300, 'x')}, kCannotCreate, "File name too long"},
        {{"init", here + "/half"}, 69, "no connection to the queue; MQInit"},
        {{"init", ""}, kUsage, "DIR has a name"},
        {{"init", here + "/a\nb"}, kUsage, "line break"},
        {{"init", here + "/x", "--host", "a\nb"}, kUsage, "is no host"},
        {{"init", here + "/x", "--domain", ""}, kUsage, "is empty"},
        {{"init", here + "/x", "--zone", "America/New_York"}, kUsage, "longer than 15 bytes"},
        {{"init", here + "/x", "--zone", "foo"}, kUsage, "no time zone"},
    };
    for (const Row& row : rows) {
        const Ended ended = run(row.arguments);
        EXPECT_EQ(ended.exit, row.exit) << row.said;
        EXPECT_THAT(ended.err, HasSubstr(row.said));
        EXPECT_THAT(ended.out, IsEmpty());
    }
    EXPECT_FALSE(std::filesystem::exists(directory() / "new"));
    EXPECT_FALSE(std::filesystem::exists(directory() / "x"));
    EXPECT_FALSE(std::filesystem::exists(directory() / "half/tmp"));
    EXPECT_FALSE(std::filesystem::exists(directory() / "half/ostra.ini"));
}

TEST(ShellWord, IsQuotedWhereAShellWouldReadIt) {
    EXPECT_EQ(command::shell_word("/srv/a-b_c.d"), "/srv/a-b_c.d");
    EXPECT_EQ(command::shell_word("$(x) 'y'"), "'$(x) '\\''y'\\'''");
    EXPECT_EQ(command::shell_word(""), "''");
}

}  // namespace
}  // namespace vel::test
