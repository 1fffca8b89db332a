// Temporary names, message locks, copying, chains.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <thread>

#include "frame/chain.h"
#include "tests/support/fixture.h"

namespace vel::test {
namespace {

using testing::ElementsAre;

class TempNameTest : public VelTest {
  protected:
    void set_counter(int32_t number) const {
        file("tmpcnt.$$$", {reinterpret_cast<const char*>(&number), sizeof number});
    }
    // The next name without its directory; "(null)" for none.
    std::string next(const char* prefix = "MIME") {
        const COwned<char> path(_veltempnam("has no effect", prefix));
        if (!path) return "(null)";
        EXPECT_TRUE(std::string_view(path.get()).starts_with(directory().string() + "/"));
        return path.get() + directory().string().size() + 1;
    }
};

TEST_F(TempNameTest, counts_in_a_file_of_four_bytes) {
    EXPECT_EQ(next(), "MIME00000");
    EXPECT_EQ(next(nullptr), "00001");
    const int32_t last = 1;
    EXPECT_EQ(content((directory() / "tmpcnt.$$$").string()), std::string(reinterpret_cast<const char*>(&last), 4));
    const COwned<char> alias(VELGetTempFileName(nullptr, "x"));
    EXPECT_TRUE(std::string_view(alias.get()).ends_with("/x00002"));
    for (const int32_t stored : {99999, 100000, -1, -2147483647 - 1, 2147483647}) {
        set_counter(stored);
        EXPECT_EQ(next(), "MIME00000") << stored;
    }
    set_counter(99998);
    EXPECT_EQ(next(), "MIME99999");
    file("tmpcnt.$$$", "abc");
    EXPECT_EQ(next(), "MIME00000") << "fewer than four bytes count as none";
}

TEST_F(TempNameTest, passes_over_names_that_are_taken_and_gives_up) {
    for (int number = 10; number < 30; ++number) file("t000" + std::to_string(number), "");
    set_counter(10);
    EXPECT_EQ(next("t"), "t00030");
    set_counter(9);
    EXPECT_EQ(next("t"), "(null)") << "twenty names in a row are taken";
    EXPECT_EQ(next("t"), "t00030");
    set("Gateway", "TemporaryDirectory", (directory() / "missing").c_str());
    EXPECT_EQ(_veltempnam(nullptr, "x"), nullptr);
}

TEST_F(TempNameTest, kept_locks_do_not_exclude_one_another) {
    const std::string message = (directory() / "m").string();
    EXPECT_EQ(unlockmsg(message.c_str()), -1);
    EXPECT_EQ(lockmsg(message.c_str()), 0);
    EXPECT_EQ(lockmsg(message.c_str()), 0);
    EXPECT_EQ(islocked(message.c_str()), 0);
    EXPECT_THAT(left_behind("m"), ElementsAre("m.lck"));
    set("Debug", "LogLocking", "yes");
    EXPECT_EQ(lockmsg(message.c_str()), 0);
    EXPECT_EQ(unlockmsg(message.c_str()), 0);
    EXPECT_THAT(left_behind("m"), ElementsAre());
    EXPECT_THAT(take_log(),
                ElementsAre(LogLine{6, "test", "lock: " + message}, LogLine{6, "test", "unlock: " + message}));
    EXPECT_EQ(lockmsg((directory() / "no" / "m").c_str()), -1);
    EXPECT_THAT(take_log(1), ElementsAre("open failed"));
}

TEST_F(TempNameTest, kept_copying_sets_the_umask_and_answers_0) {
    const mode_t before = ::umask(022);
    const std::string text = std::string(70000, 'x') + "end";
    const std::string source = file("source", text);
    const std::string target = file("target", std::string(80000, 'y'));
    EXPECT_EQ(CopyFile(source.c_str(), target.c_str(), 1), 0);
    EXPECT_EQ(content(target), text);
    EXPECT_EQ(CopyFile(source.c_str(), source.c_str(), 0), 0);
    EXPECT_EQ(content(source), text) << "a file is not emptied by itself";
    EXPECT_EQ(CopyFile((source + "-missing").c_str(), target.c_str(), 0), 0);
    EXPECT_EQ(content(target), text) << "without a source the target is left alone";
    EXPECT_EQ(::umask(before), mode_t{007});
}

TEST_F(TempNameTest, chains_grow_at_their_end) {
    ms* chain = nullptr;
    EXPECT_EQ(appendString(&chain, "a"), 1);
    ChainTail(chain).append(copy_text("b"));
    EXPECT_EQ(appendString(&chain, "c"), 1);
    std::string joined;
    for (const ms* node = chain; node; node = node->next) joined += node->text;
    EXPECT_EQ(joined, "abc");
    freeStringChain(chain);
    freeStringChain(nullptr);
}

class FrameThreads : public VelTest {};

// Every name is handed out once, and opening, reading and closing in many threads disturbs nobody.
TEST_F(FrameThreads, names_and_files_in_many_threads) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 200;
    const std::string path = file("shared", "one line\n");
    std::vector<std::vector<std::string>> names(kThreads);
    std::vector<std::thread> threads;
    for (auto& mine : names) {
        threads.emplace_back([&, this] {
            set("Gateway", "TemporaryDirectory", directory().c_str());
            for (int i = 0; i < kRounds; ++i) {
                const COwned<char> name(_veltempnam(nullptr, "T"));
                if (name) mine.emplace_back(name.get());
                const int handle = fileopen(path.c_str(), 1, 0);
                char* line = nullptr;
                if (VELGetLine(handle, &line) != 1 || std::strcmp(line, "one line\n") != 0) mine.clear();
                fileclose(handle);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::set<std::string> distinct;
    for (const auto& mine : names) distinct.insert(mine.begin(), mine.end());
    EXPECT_EQ(distinct.size(), static_cast<std::size_t>(kThreads * kRounds));
}

}  // namespace
}  // namespace vel::test
