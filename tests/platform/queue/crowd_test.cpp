// Many processes at one queue, with several threads each: the suite's name has it run under the thread sanitizer.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <set>
#include <sstream>
#include <thread>

#include "tests/platform/queue/place.h"

namespace vel::test {
namespace {

constexpr int kThreads = 4;
constexpr int kEach = 5;
constexpr int kMember = 3;  // the descriptor that a member tells what it does on

int number(const char* name, int fallback) {
    const char* const value = std::getenv(name);
    return value ? std::atoi(value) : fallback;
}

void tell(const std::string& what) {
    const std::string line = what + "\n";
    EXPECT_EQ(::write(kMember, line.data(), line.size()), static_cast<ssize_t>(line.size()));
}

// Takes as many messages as it has put in, whoever's they are: so the queue is empty when all members are done.
void work() {
    const OwnedConsumer consumer(MQOpenConsumer("crowd"));
    for (int n = 0; n < kEach; ++n) {
        tell("sent " + submit());
        MQEntry* entry = nullptr;
        int result = 0;
        while ((result = MQClaim(consumer.get(), nullptr, 0, 600, &entry)) == 0) ::usleep(1000);
        ASSERT_EQ(result, 1);
        const OwnedEntry claimed(entry);
        ASSERT_EQ(MQFinish(consumer.get(), claimed->id, MQ_ALL), 1);
        tell(std::string("took ") + claimed->id);
    }
}

// One process of the crowd, started by the test below.
TEST(QueueMember, DISABLED_of_the_crowd) {
    ASSERT_EQ(MQInit(nullptr, "member"), 1);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) threads.emplace_back(work);
    for (std::thread& thread : threads) thread.join();
}

class QueueCrowdThreads : public QueuePlace {
  protected:
    // Starts a member, of another build too: VEL_CROWD_PROGRAMS names some, with blanks between them.
    static pid_t start(const std::string& program, int told) {
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, told, kMember);
        std::vector<std::string> texts = {program, "--gtest_also_run_disabled_tests", "--gtest_brief=1",
                                          "--gtest_filter=QueueMember.*"};
        std::vector<char*> arguments;
        for (std::string& text : texts) arguments.push_back(text.data());
        arguments.push_back(nullptr);
        pid_t member = -1;
        EXPECT_EQ(::posix_spawn(&member, program.c_str(), &actions, nullptr, arguments.data(), environ), 0);
        ::posix_spawn_file_actions_destroy(&actions);
        return member;
    }
};

TEST_F(QueueCrowdThreads, take_every_message_once) {
    ASSERT_EQ(MQInit(nullptr, "crowd"), 1);
    const int told = ::open(path("told").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    const char* const named = std::getenv("VEL_CROWD_PROGRAMS");
    std::istringstream list(named ? named : "/proc/self/exe");
    const std::vector<std::string> programs{std::istream_iterator<std::string>(list), {}};
    const int members = number("VEL_CROWD", 3);
    std::vector<pid_t> started;
    for (int i = 0; i < members; ++i)
        started.push_back(start(programs[static_cast<std::size_t>(i) % programs.size()], told));
    for (const pid_t member : started) {
        int status = 0;
        EXPECT_EQ(::waitpid(member, &status, 0), member);
        EXPECT_EQ(status, 0);
    }
    ::close(told);
    std::multiset<std::string> sent;
    std::multiset<std::string> taken;
    std::istringstream lines(content("told"));
    for (std::string what, id; lines >> what >> id;) (what == "sent" ? sent : taken).insert(id);
    EXPECT_EQ(sent.size(), static_cast<std::size_t>(members * kThreads * kEach));
    EXPECT_EQ(taken, sent);
    EXPECT_THAT(files(), testing::IsEmpty());
    EXPECT_TRUE(std::filesystem::is_empty(path("queue/consumers")));
}

}  // namespace
}  // namespace vel::test
