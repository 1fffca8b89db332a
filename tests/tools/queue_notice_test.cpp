// vel queue run: what senders hear of deliveries.
#include <csignal>

#include "tests/tools/sending_place.h"
#include "tools/queue/notice.h"

namespace vel::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Words = std::vector<std::string>;

class QueueNoticeTest : public SendingTest {
  protected:
    std::string send(Words options, const char* sender = "joe@x.y") const {
        options.insert(options.end(), {"--from", sender});
        return queued(options);
    }

    // Has a line of a shell deliver what is due; what the run says.
    std::string deliver(const std::string& line, Words options = {}) const {
        options.insert(options.begin(), {"queue", "run", "--channel", "smtp", "--once"});
        options.insert(options.end(), {"--", "sh", "-c", line});
        const Ended ended = run(options);
        return ended.out + ended.err;
    }

    // The notices to joe in the queue.
    static Words notices() {
        Words texts;
        for (const std::string& id : ids()) {
            const OwnedEntry found = entry(id);
            if (std::string(found->channel) != "DSN") continue;
            EXPECT_STREQ(found->recipients[0].address, "joe@x.y");
            texts.push_back(content(found->path));
        }
        return texts;
    }

    // Of each notice "bounce", or what a report says of each recipient: "ADDRESS ACTION STATUS".
    static Words gists() {
        Words gists;
        for (const std::string& notice : notices()) {
            std::istringstream lines(notice);
            std::string gist;
            for (std::string line; std::getline(lines, line);) {
                const std::string name = line.substr(0, line.find(':') + 1);
                const bool is_address = name == "Final-Recipient:";
                if (!is_address && name != "Action:" && name != "Status:") continue;
                const std::string value = line.substr(line.find_first_of(is_address ? ";" : " ") + 1);
                gist.append(gist.empty() ? "" : is_address ? ", " : " ").append(value.substr(0, value.find('\r')));
            }
            gists.push_back(gist.empty() ? "bounce" : gist);
        }
        return gists;
    }

    static void make_due(const std::string& id) {
        MQHoldEntry(id.c_str(), MQ_ALL, "", "test");
        MQReleaseEntry(id.c_str(), MQ_ALL, "test");
    }

    static void clear() {
        for (const std::string& id : ids()) MQRemoveEntry(id.c_str(), MQ_ALL, "test");
        EXPECT_THAT(ids(), IsEmpty());
    }
};

TEST_F(QueueNoticeTest, TellsTheSenderWhatHeWantsToHear) {
    struct Row {
        Words wishes;
        Words options;
        std::string line;
        Words told;
    };
    const Words batch{"--batch"}, two{"bob@x.y"};
    const auto with_bob = [](const char* notify) { return Words{"bob@x.y", "--notify", notify}; };
    const std::vector<Row> rows{
        {two, {}, "exit 67", {"bounce", "bounce"}},
        {two, batch, "exit 67", {"bounce"}},
        {two, batch, "exit 0", {}},
        {with_bob("never"), batch, "exit 67", {}},
        {with_bob("success,delay"), batch, "exit 67", {}},
        {with_bob("failure"), {}, "exit 67", {"ann@x.y failed 5.1.1", "bob@x.y failed 5.1.1"}},
        {with_bob("failure,delay"), batch, "exit 1", {"ann@x.y failed 5.0.0, bob@x.y failed 5.0.0"}},
        {with_bob("failure"), batch, "exit 0", {}},
        {with_bob("success"), batch, "exit 0", {"ann@x.y delivered 2.0.0, bob@x.y delivered 2.0.0"}},
        {{"--notify", "success"}, {"--success", "relayed"}, "exit 0", {"ann@x.y relayed 2.0.0"}},
        {{"--notify", "success"}, {"--success", "nothing"}, "exit 0", {}},
        {{"--ret", "hdrs"}, {}, "exit 65", {"ann@x.y failed 5.6.0"}},
        {{"--envid", "X"}, {}, "exit 77", {"ann@x.y failed 5.7.1"}},
        {{"--orcpt", "a@b.c"}, {}, "exit 68", {"ann@x.y failed 5.1.2"}},
        {{"--ret", "hdrs"}, {}, "echo 450 4.2.0 busy >&2; exit 75", {"ann@x.y failed 4.4.7"}},
        {{"--ret", "hdrs"}, {}, "echo 550 5.7.1 no >&2; exit 67", {"ann@x.y failed 5.7.1"}},
        {{"--ret", "hdrs"}, {}, "echo 550 4.2.0 no >&2; exit 67", {"ann@x.y failed 5.1.1"}},
        {{"--ret", "hdrs"}, {}, "echo 450 5.7.1 no >&2; exit 67", {"ann@x.y failed 5.1.1"}},
        {{"--ret", "hdrs"}, {}, "echo abc 5.7.1 550 >&2; exit 67", {"ann@x.y failed 5.1.1"}},
    };
    configure("RetryAfter=1h\nLifetime=30m\n");
    for (const Row& row : rows) {
        send(row.wishes);
        deliver(row.line, row.options);
        EXPECT_EQ(gists(), row.told) << row.line << testing::PrintToString(row.wishes);
        EXPECT_EQ(ids().size(), row.told.size()) << "the message is still there";
        clear();
    }
}

TEST_F(QueueNoticeTest, TellsOfADelayOnceWhenAllTimesHaveBeenWaited) {
    configure("RetryAfter=1h, 2h\nLifetime=1d\n");
    const std::string late = send({"--notify", "delay"}), other = send({"--notify", "failure"});
    for (std::size_t attempt = 1; attempt <= 4; ++attempt) {
        EXPECT_EQ(deliver("exit 75"), "delivered 0, deferred 2, failed 0, held 0\n");
        EXPECT_EQ(gists().size(), attempt < 3 ? 0U : 1U);
        make_due(late);
        make_due(other);
    }
    EXPECT_THAT(gists(), ElementsAre("ann@x.y delayed 4.0.0"));
    EXPECT_THAT(notices()[0], HasSubstr("\r\nWill-retry-until: "));
}

TEST_F(QueueNoticeTest, PutsTheEnvelopeAndTheReasonIntoLinesOfAscii) {
    send({"--envid", "A+2BB", "--orcpt", "rfc822;Ann+2BX@x.y", "--ret", "full"});
    send({"--ret", "hdrs"});
    send({});
    deliver("printf 'no \\303\\251\\tx\\ry %0940d' 0 >&2; exit 67");
    const Words told = notices();
    ASSERT_EQ(told.size(), 3U);
    EXPECT_THAT(told[0], HasSubstr("\r\nOriginal-Envelope-Id: A+B\r\n"));
    EXPECT_THAT(told[0], HasSubstr("\r\nOriginal-Recipient: rfc822;Ann+X@x.y\r\n"));
    EXPECT_THAT(told[0], HasSubstr("\r\n\r\nbody\r\n"));
    EXPECT_THAT(told[1], Not(HasSubstr("body")));
    EXPECT_THAT(told[1], HasSubstr("\r\nDiagnostic-code: smtp;exit code 67: no ???x?y 000"));
    EXPECT_THAT(told[2], HasSubstr("\r\n\r\n  ann@x.y\r\n    exit code 67: no ???x?y 000"));
    for (const std::string& notice : told) {
        EXPECT_TRUE(std::none_of(notice.begin(), notice.end(), [](char c) { return c & 0x80; }));
        std::istringstream lines(notice);
        for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 998U);
    }
}

TEST_F(QueueNoticeTest, MakesNoNoticeOfANoticeOrForNobody) {
    const Words everything{"--channel", "DSN"};
    send({});
    send({"--notify", "failure"});
    EXPECT_EQ(deliver("exit 1", everything), "delivered 0, deferred 0, failed 2, held 2\n");
    EXPECT_THAT(listed(), ElementsAre("joe@x.y held 1 exit code 1", "joe@x.y held 1 exit code 1"));
    clear();
    const std::string id = send({"--notify", "failure,success"}, "<>");
    deliver("exit 1", everything);
    EXPECT_THAT(listed(), ElementsAre("ann@x.y held 1 exit code 1"));
    MQReleaseEntry(id.c_str(), MQ_ALL, "test");
    deliver("exit 0", everything);
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(QueueNoticeTest, KeepsWhatHasFailedUntilItsSenderCanBeTold) {
    const std::string full = "MinimumFree=1000000000\n";
    const std::string reason = "exit code 67; the sender has not been told; ";
    const std::string id = send({"--notify", "success,failure"});
    configure(full);
    EXPECT_EQ(deliver("exit 67"), "delivered 0, deferred 1, failed 0, held 0\n");
    EXPECT_THAT(listed(), ElementsAre(HasSubstr("ann@x.y waiting 1 " + reason)));
    configure(full + "Lifetime=1s\n");
    make_due(id);
    deliver("exit 67");
    EXPECT_THAT(listed(), ElementsAre(HasSubstr("ann@x.y held 2 " + reason)));
    MQReleaseEntry(id.c_str(), MQ_ALL, "test");
    EXPECT_THAT(deliver("exit 0"), AllOf(HasSubstr("delivered 1, "), HasSubstr("the sender has not been told; ")));
    EXPECT_THAT(ids(), IsEmpty()) << "and it is not delivered once more";
}

TEST_F(QueueNoticeTest, MakesASecondNoticeAfterACrashAndNeverNone) {
    send({});
    const pid_t child = ::fork();
    if (child == 0) {
        MQConsumer* const consumer = MQOpenConsumer("one that dies");
        MQEntry* claimed = nullptr;
        if (MQClaim(consumer, nullptr, 1, 300, &claimed) == 1)
            command::tell_sender(*claimed, {command::Fate::permanent_failure, "5.0.0", "no"});
        ::raise(SIGKILL);
    }
    EXPECT_EQ(wait_for(child), -SIGKILL);
    EXPECT_EQ(notices().size(), 1U);
    EXPECT_EQ(ids().size(), 2U);
    deliver("exit 67");
    EXPECT_EQ(notices().size(), 2U);
    EXPECT_EQ(ids().size(), 2U);
}

}  // namespace
}  // namespace vel::test
