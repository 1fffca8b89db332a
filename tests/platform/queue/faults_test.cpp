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

struct Fault {
    int error;
    bool ever_after = false;  // all later calls fail as well
};

class QueueFaults : public QueuePlace {
  protected:
    // The capture of log lines needs memory.
    QueueFaults() {
        LogCaptureStop();
        configure(content("ostra.ini") + "Target=" + path("log") + "\n");
        EXPECT_EQ(MQInit(nullptr, "a module with a long name"), 1);
    }

    // Those of the queue's files; settings and log have theirs.
    std::ptrdiff_t open_descriptors() const {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::count_if(begin(all), end(all), [&](const auto& descriptor) {
            std::error_code gone;
            return read_symlink(descriptor.path(), gone).string().starts_with(path("queue/"));
        });
    }

    // What is done while calls fail: step returns whether it did what it should; prepare and verify stand around it,
    // undisturbed.
    struct Deed {
        std::function<void()> prepare;
        std::function<bool()> step;
        std::function<void(bool)> verify;
    };

    // Lets each call of the step in turn fail, from the first one that counts on, in each way, until none is left.
    void in_turn(const Deed& deed,
                 const std::vector<Fault>& faults = {{EIO}, {ENOSPC, true}, {EMFILE}, {kShortWrite}, {kNoMemory}},
                 int first = 1) {
        for (const Fault& fault : faults) {
            int n = first;
            while (happens(deed, n, fault) && n < kTooManyCalls) ++n;
            EXPECT_TRUE(n > first || fault.error == kShortWrite) << "no call was seen";
            EXPECT_LT(n, kTooManyCalls);
        }
    }

    // Returns whether there was such a call.
    bool happens(const Deed& deed, int n, const Fault& fault) {
        SCOPED_TRACE(testing::Message() << "call " << n << " fails with error " << fault.error);
        lasting_ = fault.ever_after;
        deed.prepare();
        const std::ptrdiff_t descriptors = open_descriptors();
        fail_call(n, fault.error, fault.ever_after);
        const bool done = deed.step();
        const bool happened = end_of_faults();
        EXPECT_TRUE(done || happened);
        EXPECT_GE(lasting_ ? MQReclaim() : 0, 0);
        deed.verify(done);
        EXPECT_LE(open_descriptors(), descriptors);
        return happened;
    }

    std::size_t messages() const {
        const auto all = files();
        return static_cast<std::size_t>(
            std::count_if(all.begin(), all.end(), [](const std::string& name) { return name.ends_with(".msg"); }));
    }

    bool lasting_ = false;

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
    in_turn({[] {}, [&] { return (context = CreateMQEntry()) != nullptr; },
             [&](bool done) {
                 EXPECT_THAT(files(), SizeIs(1 + (done ? 2 : 0)));
                 if (done) DiscardMQEntry(context);
             }});
}

TEST_F(QueueFaults, an_entry_is_committed_or_leaves_nothing) {
    submit();
    MQContext* context = nullptr;
    std::size_t committed = 1;
    in_turn({[&] { context = filled_entry(); }, [&] { return CloseMQEntry(context) != 0; },
             [&](bool done) {
                 committed += done;
                 EXPECT_EQ(messages(), committed);
                 EXPECT_THAT(listed(), SizeIs(committed));
             }});
}

// A step that fails can be done again; nothing is lost between claim and end, and no file stays behind.
TEST_F(QueueFaults, a_claim_and_its_end_fail_without_a_trace) {
    OwnedConsumer consumer(MQOpenConsumer("faults"));
    OwnedEntry claimed;
    const auto claim_one = [&] {
        MQEntry* entry = nullptr;
        const int result = MQClaim(consumer.get(), nullptr, 0, 60, &entry);
        claimed.reset(entry);
        return result == 1;
    };
    const auto finish = [&] { return claimed && MQFinish(consumer.get(), claimed->id, MQ_ALL) == 1; };
    submit();
    EXPECT_TRUE(claim_one() && finish());

    in_turn({[] { submit(); }, claim_one,
             [&](bool done) {
                 if (!done && lasting_) consumer.reset(MQOpenConsumer("faults"));  // What could not be given back.
                 EXPECT_TRUE(done || claim_one());
                 EXPECT_TRUE(finish());
             }});
    in_turn({[&] { submit(), claim_one(); }, finish, [&](bool done) { EXPECT_TRUE(done || finish()); }});
    EXPECT_THAT(listed(), IsEmpty());
    MQReclaim();
    EXPECT_THAT(files(), IsEmpty());
}

// A start that fails can be repeated, and has left nothing that does harm. The first calls only make directories.
TEST_F(QueueFaults, a_start_fails_or_is_complete) {
    bool odd = false;
    const auto new_tables = [&] {
        const std::string directory = path((odd = !odd) ? "odd" : "even");
        std::filesystem::create_directory(directory);
        for (const char* const file : {"/queue.db", "/queue.db-wal"}) std::filesystem::remove(directory + file);
        ProfileOverlaySet("Gateway", "QueueDirectory", directory.c_str());
    };
    in_turn({new_tables, [] { return MQInit(nullptr, "faults") == 1; },
             [](bool done) {
                 EXPECT_TRUE(done || MQInit(nullptr, "faults") == 1);
                 EXPECT_THAT(listed(), IsEmpty());
             }},
            {{ENOSPC}}, 67);
}

// What is left to be reclaimed stays until it is.
TEST_F(QueueFaults, reclaiming_fails_and_can_be_repeated) {
    const std::string id = submit();
    const auto die = [&] {
        MQContext* const context = CreateMQEntry();
        const std::string message = GetMQPathName(context, ".msg");
        DiscardMQEntry(context);
        put_message(message, "half");
        const OwnedConsumer consumer(MQOpenConsumer("dead"));
        EXPECT_TRUE(claim(consumer));
        std::filesystem::remove_all(path("queue/consumers"));
        std::filesystem::create_directory(path("queue/consumers"));
        put_message(message, "half");
    };
    in_turn({die, [] { return MQReclaim() == 1; },
             [&](bool) {
                 EXPECT_GE(MQReclaim(), 0);
                 EXPECT_THAT(files(), testing::ElementsAre(id + ".msg"));
                 EXPECT_THAT(listed(MQ_WAITING), SizeIs(1));
             }},
            {{EIO}, {ENOSPC, true}});
}

// SQLite's locks and shared memory do not reach over a network.
TEST_F(QueueFaults, a_network_file_system_is_refused) {
    std::filesystem::create_directory(path("far"));
    ProfileOverlaySet("Gateway", "QueueDirectory", path("far").c_str());
    for (const uint32_t type : {0x6969u, 0xff534d42u, 0x65735546u}) {
        pretend_file_system(type);
        EXPECT_EQ(MQInit(nullptr, "faults"), 0) << type;
        EXPECT_EQ(MQIsLocal(path("far").c_str()), 0) << type;
    }
    EXPECT_EQ(MQIsLocal(path("none").c_str()), 0);
    EXPECT_TRUE(std::filesystem::is_empty(path("far")));
    EXPECT_THAT(content("log"), testing::HasSubstr("is not on a local file system"));
    pretend_file_system(0xef53);
    EXPECT_EQ(MQInit(nullptr, "faults"), 1);
    EXPECT_EQ(MQIsLocal(path("far").c_str()), 1);
    pretend_file_system(0);
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
