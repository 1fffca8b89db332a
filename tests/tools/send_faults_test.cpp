// vel send, killed at any moment: what it has printed is in the queue, whole, and nothing else stays.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "tests/tools/sending_place.h"

namespace vel::test {
namespace {

using std::chrono::microseconds, std::chrono::steady_clock;

class SendFaults : public SendingTest {
  protected:
    SendFaults() : message_("Subject: x\r\n\r\n" + crlf(lines())) { file("message", message_); }

    // Sends the message and, unless the time is 0, kills the command then; what it has printed.
    std::string sent(microseconds time) {
        const int out = ::open(file("told", "").c_str(), O_WRONLY | O_CLOEXEC);
        const pid_t child = start({"send", (directory() / "message").string(), "--from", "me@example.com", "--to",
                                   "ann@example.com", "joe@example.com"},
                                  -1, out);
        if (time.count() > 0) {
            std::this_thread::sleep_for(time);
            ::kill(child, SIGKILL);
        }
        const int exit = wait_for(child);
        EXPECT_TRUE(exit == 0 || exit == -SIGKILL) << exit;
        ::close(out);
        return content((directory() / "told").string());
    }

    void expect_whole(const std::string& id) const {
        const OwnedEntry found = entry(id);
        ASSERT_TRUE(found) << id;
        EXPECT_EQ(found->recipientCount, 2);
        const std::string stored = content(found->path);
        EXPECT_EQ(stored.size(), static_cast<std::size_t>(found->size));
        EXPECT_TRUE(stored.ends_with(message_)) << id;
    }

  private:
    static std::string lines() {
        std::string text;
        for (int line = 0; line < 20000; ++line) text += "line " + std::to_string(line) + "\n";
        return text;
    }

    const std::string message_;
};

TEST_F(SendFaults, a_killed_command_has_sent_what_it_has_printed) {
    const char* const wanted = std::getenv("VEL_KILL_ROUNDS");
    const int rounds = wanted ? std::atoi(wanted) : 50;
    const auto before = steady_clock::now();
    EXPECT_EQ(sent(microseconds(0)).size(), 25u);
    auto longest = std::chrono::duration_cast<microseconds>(steady_clock::now() - before);
    std::size_t told = 1;
    Random random(3);
    for (int round = 0; round < rounds; ++round) {
        const std::string id = sent(longest * random.below(1000) / 1000 + microseconds(1));
        longest += id.empty() ? longest / 32 : -longest / 16;  // so that every third or so is told, however busy we are
        if (id.empty()) continue;
        ++told;
        ASSERT_TRUE(id.ends_with('\n')) << id;
        expect_whole(id.substr(0, id.size() - 1));
    }
    EXPECT_GT(told, 1u);
    EXPECT_GE(MQReclaim(), 0);
    const std::vector<std::string> ids = SendingTest::ids();
    for (const std::string& id : ids) expect_whole(id);
    EXPECT_GE(ids.size(), told);
    EXPECT_LE(ids.size(), told + static_cast<std::size_t>(rounds));  // in the queue, and killed before it could tell
    RecordProperty("told", static_cast<int>(told));
    for (const std::string& id : ids) EXPECT_EQ(MQRemoveEntry(id.c_str(), MQ_ALL, "test"), 2);
    EXPECT_GE(MQReclaim(), 0);
    EXPECT_EQ(files(), 0u);
    for (const auto& left : std::filesystem::directory_iterator(temporary())) std::filesystem::remove_all(left);
    take_log();
}

}  // namespace
}  // namespace vel::test
