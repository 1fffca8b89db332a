#include "tests/platform/queue/faults.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <random>

#include "tests/platform/queue/place.h"

namespace vel::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

// More calls than any step of the queue makes: a loop that gets here has no end.
constexpr int kTooManyCalls = 1000;

class QueueFaults : public QueuePlace {
  protected:
    QueueFaults() { EXPECT_EQ(MQInit(nullptr, "faults"), 1); }

    // Those of the queue's files; the settings have theirs.
    std::ptrdiff_t open_descriptors() const {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::count_if(begin(all), end(all), [&](const auto& descriptor) {
            std::error_code gone;
            return read_symlink(descriptor.path(), gone).string().starts_with(path("queue"));
        });
    }

    // Lets each call of step in turn fail, in each way, until none is left to fail. step returns whether it did
    // what it should; prepare and verify stand around it, undisturbed.
    void in_turn(const std::function<void()>& prepare, const std::function<bool()>& step,
                 const std::function<void(bool)>& verify) const {
        for (const int error : {EIO, ENOSPC, EMFILE, 0}) {
            bool fault = true;
            for (int n = 1; fault; ++n) {
                SCOPED_TRACE(testing::Message() << "call " << n << " fails with error " << error);
                ASSERT_LT(n, kTooManyCalls);
                const std::ptrdiff_t descriptors = open_descriptors();
                prepare();
                fail_call(n, error);
                const bool done = step();
                fault = end_of_faults();
                EXPECT_TRUE(done || fault);
                EXPECT_TRUE(fault || n > 1 || error == 0) << "no call was seen";
                verify(done);
                EXPECT_EQ(open_descriptors(), descriptors);
            }
        }
    }

    std::size_t messages() const {
        const auto all = files();
        return static_cast<std::size_t>(
            std::count_if(all.begin(), all.end(), [](const std::string& name) { return name.ends_with(".msg"); }));
    }

    static MQContext* filled_entry() {
        MQContext* const context = CreateMQEntry();
        put_message(GetMQPathName(context, ".msg"), "text");
        InsertMQChannel(context, "c", 255);
        PutMQEnvelope(context, TestEnvelope({"a"}).get());
        return context;
    }
};

TEST_F(QueueFaults, an_entry_is_opened_or_leaves_nothing) {
    MQContext* context = nullptr;
    submit();  // What is opened once is open now.
    in_turn([] {}, [&] { return (context = CreateMQEntry()) != nullptr; },
            [&](bool done) {
                EXPECT_THAT(files(), SizeIs(1 + (done ? 2 : 0)));
                if (done) DiscardMQEntry(context);
            });
}

TEST_F(QueueFaults, an_entry_is_committed_or_leaves_nothing) {
    submit();
    MQContext* context = nullptr;
    std::size_t committed = 1;
    in_turn([&] { context = filled_entry(); }, [&] { return CloseMQEntry(context) != 0; },
            [&](bool done) {
                committed += done;
                EXPECT_EQ(messages(), committed);
                EXPECT_THAT(listed(), SizeIs(committed));
            });
}

// A step that fails can be done again; nothing is lost between claim and end, and no file stays behind.
TEST_F(QueueFaults, a_claim_and_its_end_fail_without_a_trace) {
    const OwnedConsumer consumer(MQOpenConsumer("faults"));
    OwnedEntry claimed;
    const auto claim_one = [&] {
        MQEntry* entry = nullptr;
        const int result = MQClaim(consumer.get(), nullptr, 0, 60, &entry);
        claimed.reset(entry);
        return result == 1;
    };
    const auto finish = [&] { return MQFinish(consumer.get(), claimed->id, MQ_ALL) == 1; };
    submit();
    EXPECT_TRUE(claim_one() && finish());

    in_turn([] { submit(); }, claim_one,
            [&](bool done) {
                EXPECT_TRUE(done || claim_one());
                EXPECT_TRUE(finish());
            });
    in_turn([&] { submit(), claim_one(); }, finish, [&](bool done) { EXPECT_TRUE(done || finish()); });
    EXPECT_THAT(listed(), IsEmpty());
    MQReclaim();
    EXPECT_THAT(files(), IsEmpty());
}

// A process that submits is killed at any moment: what it has told is there, whole, and nothing else stays.
TEST_F(QueueFaults, a_killed_submitter_leaves_whole_entries_or_none) {
    const char* const wanted = std::getenv("VEL_KILL_ROUNDS");
    const int rounds = wanted ? std::atoi(wanted) : 50;
    std::minstd_rand random(7);
    std::size_t told = 0;
    for (int round = 0; round < rounds; ++round) {
        int pipe[2];
        ASSERT_EQ(::pipe(pipe), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            MQInit(nullptr, "victim");
            for (;;) {
                const std::string id = submit({"a", "b"});
                if (id.empty() || ::write(pipe[1], id.data(), id.size()) != static_cast<ssize_t>(id.size())) ::_exit(1);
            }
        }
        ::close(pipe[1]);
        ::usleep(1000 + static_cast<useconds_t>(random() % 60'000));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status));
        std::array<char, 24> id;
        while (::read(pipe[0], id.data(), id.size()) == static_cast<ssize_t>(id.size())) {
            ++told;
            const OwnedEntry entry = read(std::string(id.data(), id.size()));
            ASSERT_TRUE(entry);
            EXPECT_EQ(entry->recipientCount, 2);
        }
        ::close(pipe[0]);
    }
    EXPECT_GE(MQReclaim(), 0);
    const OwnedConsumer consumer(MQOpenConsumer("after"));
    std::size_t taken = 0;
    for (OwnedEntry entry; (entry = claim(consumer)); ++taken) {
        EXPECT_EQ(std::filesystem::file_size(entry->path), 7u);
        EXPECT_EQ(entry->recipientCount, 2);
        MQFinish(consumer.get(), entry->id, MQ_ALL);
    }
    EXPECT_GT(told, 0u);
    EXPECT_GE(taken, told);
    EXPECT_LE(taken, told + static_cast<std::size_t>(rounds));  // committed, and killed before it could tell
    MQReclaim();
    EXPECT_THAT(listed(), IsEmpty());
    EXPECT_EQ(messages(), 0u);
}

}  // namespace
}  // namespace vel::test
