#include <sys/stat.h>

#include <thread>

#include "tests/platform/scratch.h"

namespace vel::test {
namespace {

using testing::UnorderedElementsAre;

struct ProfileWrite : Scratch {};
struct ProfileThreads : Scratch {};

int store(const char* section, const char* key, const char* value, const char* file = "ostra.ini") {
    return WritePrivateProfileString(section, key, value, file);
}

TEST_F(ProfileWrite, changes_one_setting_and_no_other_byte) {
    struct Row {
        std::string before;
        const char* section;
        const char* key;
        const char* value;
        std::string after;
    };
    const Row rows[] = {
        {"[A]\nk=1\nl=2\n", "a", "k", "new", "[A]\nk=new\nl=2\n"},
        {"[A]\n \tk \t=\t \"old\" \r\nl\r\n", "A", "k", "n", "[A]\n \tk \t=\t n \r\nl\r\n"},
        {"[a]\nx\n[A]\nk=1\nk=2\n", "A", "k", "3", "[a]\nx\n[A]\nk=3\nk=2\n"},
        {"[A]\r\nk= \t\r\n", "A", "k", "v", "[A]\r\nk=v \t\r\n"},
        {"[A]\nk = 1", "A", "k", "1", "[A]\nk = 1"},
        {{"\0[A]\n]\r\n[A]\nk=\0\n\xFF", 17}, "A", "k", "v", {"\0[A]\n]\r\n[A]\nk=v\n\xFF", 17}},
        {"[A]\nx=1\n\n; of B\n[B]\n", "A", "k", "v", "[A]\nx=1\nk=v\n\n; of B\n[B]\n"},
        {"[A]\n;k=0\n[B]\n", "A", "k", "v", "[A]\nk=v\n;k=0\n[B]\n"},
        {"[A]\r\nx=1", "A", "k", "v", "[A]\r\nx=1\r\nk=v\r\n"},
        {"[A]\nx=1\n", "B", "k", "v", "[A]\nx=1\n\n[B]\nk=v\n"},
        {"; only\r\n[A]", "B", "k", "v", "; only\r\n[A]\r\n\r\n[B]\r\nk=v\r\n"},
        {"[A\nx=1\n", "A", "k", "v", "[A\nx=1\n\n[A]\nk=v\n"},
        {"\xEF\xBB\xBF[A]\nk=1\n", "A", "k", "2", "\xEF\xBB\xBF[A]\nk=2\n"},
        {"", "A", "k", " v\t", "[A]\nk=\" v\t\"\n"},
        {"", "A", "k", "\"v\"", "[A]\nk=\"\"v\"\"\n"},
        {"", "A", "k", "\"", "[A]\nk=\"\n"},
        {"", "a b[;", "k ;]#\xE4", "=;[", "[a b[;]\nk ;]#\xE4==;[\n"},
        {"[A]\nk=1\nK=2\r\n k = 3\n[B]\nk=4\n[a]\nk=5", "A", "k", nullptr, "[A]\nK=2\r\n[B]\nk=4\n[a]\n"},
        {"[A]\nx=1", "A", "k", nullptr, "[A]\nx=1"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.before);
        configure(row.before);
        EXPECT_EQ(store(row.section, row.key, row.value), 1);
        EXPECT_EQ(content("ostra.ini"), row.after);
        EXPECT_EQ(setting(row.section, row.key), row.value ? row.value : "-");
    }
}

TEST_F(ProfileWrite, refuses_what_could_not_be_read_back) {
    configure("[A]\nk=1\n");
    for (const char* section : {static_cast<const char*>(nullptr), "", "A]", " A", "A\t", "A\nB", "A\rB"}) {
        EXPECT_EQ(store(section, "k", "v"), 0) << testing::PrintToString(section);
    }
    for (const char* key :
         {static_cast<const char*>(nullptr), "", "k=", "[k", ";k", "#k", " k", "k ", "k\nl", "k\rl", "k\r"}) {
        EXPECT_EQ(store("A", key, "v"), 0) << testing::PrintToString(key);
    }
    const std::string more_than_is_read(4 * 1024 * 1024, 'v');
    for (const char* value : {"v\nw", "v\rw", "\r\n", more_than_is_read.c_str()}) EXPECT_EQ(store("A", "k", value), 0);
    EXPECT_EQ(store("A\n", "k", nullptr), 0);
    EXPECT_EQ(store("A", "k", "v", nullptr), 0);
    EXPECT_EQ(store("A", "k", "v", ""), 0);
    EXPECT_EQ(content("ostra.ini"), "[A]\nk=1\n");
}

TEST_F(ProfileWrite, fails_where_no_file_can_be_written) {
    std::filesystem::create_directory(path("directory"));
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    write("huge", "");
    std::filesystem::resize_file(path("huge"), uint64_t{5} << 30);
    std::filesystem::create_symlink("loop", path("loop"));
    for (const char* name : {"directory", "pipe", "huge", "loop"}) EXPECT_EQ(store("A", "k", "v", name), 0) << name;
    EXPECT_EQ(store("A", "k", "v", path("missing/below.ini").c_str()), 0);
    EXPECT_EQ(std::filesystem::file_size(path("huge")), uint64_t{5} << 30);
}

TEST_F(ProfileWrite, replaces_the_file_behind_its_name) {
    ASSERT_EQ(store("A", "k", nullptr), 1);
    EXPECT_FALSE(std::filesystem::exists(path("ostra.ini"))) << "nothing to remove";
    ASSERT_EQ(store("A", "k", "1"), 1) << "made when missing";
    write("ostra.ini.new", "what a crash left behind");
    std::filesystem::permissions(path("ostra.ini"), std::filesystem::perms(0640));
    std::filesystem::create_symlink("ostra.ini", path("link.ini"));
    std::filesystem::create_hard_link(path("ostra.ini"), path("before"));
    ASSERT_EQ(store("A", "k", "2", "link.ini"), 1);
    EXPECT_EQ(content("before"), "[A]\nk=1\n") << "replaced as a whole, never written in place";
    EXPECT_EQ(content("ostra.ini"), "[A]\nk=2\n");
    EXPECT_TRUE(std::filesystem::is_symlink(path("link.ini")));
    EXPECT_EQ(std::filesystem::status(path("ostra.ini")).permissions(), std::filesystem::perms(0640));
    EXPECT_THAT(names(), UnorderedElementsAre("ostra.ini", "ostra.ini.lock", "link.ini", "before"));
}

// A reader sees a whole state at any time, and no writer undoes another's work.
TEST_F(ProfileThreads, read_while_others_write) {
    constexpr int kWrites = 25;
    configure("[A]\nx=0\ny=0\n[B]\nalways=here\n");
    const auto writer = [](const char* key) {
        for (int i = 1; i <= kWrites; ++i) {
            ASSERT_EQ(store("A", key, std::to_string(i).c_str()), 1);
            ASSERT_EQ(setting("A", key), std::to_string(i));
        }
    };
    std::atomic<bool> done = false;
    const auto reader = [&done] {
        int last = 0;
        while (!done) {
            const int now = std::stoi(setting("A", "x"));
            ASSERT_GE(now, last);
            last = now;
            ASSERT_EQ(setting("B", "always"), "here");
        }
    };
    std::thread readers[] = {std::thread(reader), std::thread(reader)};
    std::thread writers[] = {std::thread(writer, "x"), std::thread(writer, "y")};
    for (auto& thread : writers) thread.join();
    done = true;
    for (auto& thread : readers) thread.join();
    EXPECT_EQ(content("ostra.ini"), "[A]\nx=25\ny=25\n[B]\nalways=here\n");
}

}  // namespace
}  // namespace vel::test
