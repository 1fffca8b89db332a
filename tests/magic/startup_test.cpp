#include "tests/magic/open_table.h"
#include "tests/support/memory.h"
#include "vel/frame.h"

namespace vel::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

// What is there is kept under another name; an open table that is whole stays.
TEST_F(Magic, puts_the_seeds_in_the_place_of_a_damaged_table) {
    DelMagicRecord("asc");
    start();
    EXPECT_EQ(all(), "txt tx txt ");
    file("queue/magicdb.db", "no table");
    EXPECT_EQ(libmagic_init(), 0);
    EXPECT_EQ(all(), "txt Asc tx txt ");
    EXPECT_EQ(content(queue_ / "magicdb.db.1"), "no table");
    EXPECT_THAT(
        take_log(),
        ElementsAre(LogLine{1, "Diamond", "open: " + (queue_ / "magicdb.db is no relation.").string()},
                    LogLine{1, "Diamond", "close: " + (queue_ / "magicdb.db was set aside as number 1.").string()},
                    LogLine{6, "Libmagic", "magic db opened"}));
    DelMagicRecord("asc");
    const std::string changed = content(queue_ / "magicdb.db");
    std::filesystem::remove(queue_ / "magicdb.id0");
    EXPECT_EQ(libmagic_init(), 0);
    EXPECT_THAT(take_log(1), ElementsAre(HasSubstr("magicdb.db was set aside as number 2")));
    EXPECT_EQ(all(), "txt Asc tx txt ");
    EXPECT_EQ(content(queue_ / "magicdb.db.2"), changed);
}

TEST_F(Magic, keeps_what_is_there_without_seeds_that_can_be_used) {
    file("queue/magicdb.db", "mine");
    file("install/srcdb/magicdb.db", "no seeds");
    for (int i = 0; i < 3; ++i) EXPECT_EQ(libmagic_init(), 0);
    EXPECT_EQ(content(queue_ / "magicdb.db.1"), "mine");
    EXPECT_EQ(content(queue_ / "magicdb.db.2"), "no seeds");
    EXPECT_FALSE(std::filesystem::exists(queue_ / "magicdb.db.3"));
    EXPECT_THAT(take_log(1), Contains("magic db not opened").Times(3));
    std::filesystem::remove_all(directory() / "install");
    EXPECT_EQ(libmagic_init(), 0);
    EXPECT_EQ(content(queue_ / "magicdb.db"), "no seeds");
    EXPECT_THAT(take_log(1), ElementsAre(HasSubstr("is no relation"), "magic db not opened"));
}

// Wherever memory ends: what is said of the table is true, and what was in its place is not lost.
TEST_F(Magic, survives_a_lack_of_memory) {
    MagicRecord found;
    for (const std::size_t refused : {std::size_t{1}, kEveryRequest}) {
        std::size_t granted = 0;
        for (memory.has_failed = true; memory.has_failed; ++granted) {
            std::filesystem::remove_all(queue_);
            std::filesystem::create_directory(queue_);
            file("queue/magicdb.db", "mine");
            memory = {granted, refused, false};
            EXPECT_EQ(libmagic_init(), 0);
            memory.granted = kEveryRequest;
            const bool is_open = GetFirstMagicRecord(&found) == DIA_OK;
            EXPECT_EQ(take_log().back().text, is_open ? "magic db opened" : "magic db not opened");
            const bool was_moved = std::filesystem::exists(queue_ / "magicdb.db.1");
            EXPECT_EQ(content(queue_ / (was_moved ? "magicdb.db.1" : "magicdb.db")), "mine");
            EXPECT_TRUE(was_moved || !is_open);
        }
        EXPECT_GT(granted, 20u);
        for (granted = 0, memory.has_failed = true; memory.has_failed; ++granted) {
            const Starved starved(granted, refused);
            const int first = GetMagicFromExtension("asc", &found);
            EXPECT_TRUE(first == 0 || (first == -1 && memory.has_failed)) << granted;
        }
        take_log();
    }
}

TEST_F(Magic, kept_settings_are_those_of_ostra_ini) {
    std::snprintf(iniFileName, sizeof iniFileName, "%s", "/another");
    MagicRecord found;
    EXPECT_EQ(GetMagicFromExtension("txt", &found), 0);
    start();
    std::snprintf(iniFileName, sizeof iniFileName, "%s", "ostra.ini");
}

}  // namespace
}  // namespace vel::test
