// vel queue run: what senders hear of deliveries.
#include <csignal>

#include "tests/tools/sending_place.h"
#include "tools/queue/notice.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Words = std::vector<std::string>;

class QueueNoticeTest : public SendingTest {
  protected:
    // Its identifier.
    std::string send(Words options, const char* sender = "joe@x.y") const {
        options.insert(options.begin(), {"send", "-", "--from", sender, "--channel", "smtp", "--to", "ann@x.y"});
        const Ended sent = run(options, "Subject: s\n\nbody\n");
        EXPECT_EQ(sent.exit, 0) << sent.err;
        return sent.out.substr(0, sent.out.find('\n'));
    }

    Ended deliver(const std::string& line, Words options = {}) const {
        options.insert(options.begin(), {"queue", "run", "--channel", "smtp", "--once"});
        options.insert(options.end(), {"--", "sh", "-c", line});
        return run(options);
    }

    // The notices to joe in the queue.
    std::vector<std::string> notices() const {
        std::vector<std::string> texts;
        for (const std::string& id : ids()) {
            const OwnedEntry found = entry(id);
            if (std::string(found->channel) != "DSN") continue;
            EXPECT_STREQ(found->recipients[0].address, "joe@x.y");
            texts.push_back(content(found->path));
        }
        return texts;
    }

    // "bounce", or what a report says of each recipient.
    static std::string gist(const std::string& notice) {
        if (notice.find("multipart/mixed") != notice.npos) return "bounce";
        std::string text;
        for (const std::string& block : blocks(notice, kRecipient)) {
            text.append(text.empty() ? "" : ", ").append(value(block, kRecipient));
            text.append(value(block, "\nAction:")).append(value(block, "\nStatus:"));
        }
        return text;
    }

    static void clear() {
        for (const std::string& id : ids()) MQRemoveEntry(id.c_str(), MQ_ALL, "test");
        EXPECT_THAT(ids(), IsEmpty());
    }

  private:
    static constexpr const char* kRecipient = "Final-Recipient: rfc822;";

    // What follows each beginning of a text, up to the next.
    static std::vector<std::string> blocks(const std::string& text, const std::string& beginning) {
        std::vector<std::string> found;
        for (std::size_t at = text.find(beginning); at != text.npos;) {
            const std::size_t next = text.find(beginning, at + 1);
            found.push_back(text.substr(at, next - at));
            at = next;
        }
        return found;
    }

    static std::string value(const std::string& block, const std::string& field) {
        const std::size_t begin = block.find(field) + field.size();
        return block.substr(begin, block.find('\r', begin) - begin);
    }
};

TEST_F(QueueNoticeTest, TellsTheSenderWhatHeWantsToHear) {
    const Words two{"bob@x.y"}, batch{"--batch"};
    const auto wish = [](Words words) {
        words.insert(words.begin(), "bob@x.y");
        return words;
    };
    struct Row {
        Words wishes;
        Words options;
        std::string line;
        Words told;
    };
    const std::vector<Row> rows{
        {two, {}, "exit 67", {"bounce", "bounce"}},
        {two, batch, "exit 67", {"bounce"}},
        {two, batch, "exit 0", {}},
        {wish({"--notify", "never"}), batch, "exit 67", {}},
        {wish({"--notify", "success,delay"}), batch, "exit 67", {}},
        {wish({"--notify", "failure"}), {}, "exit 67", {"ann@x.y failed 5.1.1", "bob@x.y failed 5.1.1"}},
        {wish({"--notify", "failure,delay"}), batch, "exit 1", {"ann@x.y failed 5.0.0, bob@x.y failed 5.0.0"}},
        {wish({"--notify", "failure"}), batch, "exit 0", {}},
        {wish({"--notify", "success"}), batch, "exit 0", {"ann@x.y delivered 2.0.0, bob@x.y delivered 2.0.0"}},
        {{"--ret", "hdrs"}, {}, "exit 65", {"ann@x.y failed 5.6.0"}},
        {{"--envid", "X"}, {}, "exit 77", {"ann@x.y failed 5.7.1"}},
        {{"--orcpt", "a@b.c"}, {}, "exit 68", {"ann@x.y failed 5.1.2"}},
        {{"--ret", "hdrs"}, {}, "exit 75", {"ann@x.y failed 4.4.7"}},
    };
    configure("RetryAfter=1h\nLifetime=30m\n");
    for (const Row& row : rows) {
        send(row.wishes);
        deliver(row.line, row.options);
        Words told;
        for (const std::string& notice : notices()) told.push_back(gist(notice));
        EXPECT_EQ(told, row.told) << row.line << testing::PrintToString(row.wishes);
        EXPECT_EQ(ids().size(), row.told.size()) << "the message is still there";
        clear();
    }
}

TEST_F(QueueNoticeTest, PutsTheEnvelopeAndTheReasonIntoLinesOfAscii) {
    const std::string complaint = "printf 'no \\303\\251\\tx\\ry %01200d' 0 >&2; exit 67";
    send({"--envid", "A+2BB", "--orcpt", "rfc822;Ann+2BX@x.y", "--ret", "full"});
    send({"--ret", "hdrs"});
    send({});
    deliver(complaint);
    const std::vector<std::string> told = notices();
    ASSERT_EQ(told.size(), 3U);
    EXPECT_THAT(told[0], HasSubstr("\r\nOriginal-Envelope-Id: A+B\r\n"));
    EXPECT_THAT(told[0], HasSubstr("\r\nOriginal-Recipient: rfc822;Ann+X@x.y\r\n"));
    EXPECT_THAT(told[0], HasSubstr("\r\n\r\nbody\r\n"));
    EXPECT_THAT(told[1], Not(HasSubstr("body")));
    EXPECT_THAT(told[2], HasSubstr("\r\n\r\n  ann@x.y\r\n    exit code 67: "));
    for (const std::string& notice : told) {
        EXPECT_TRUE(std::none_of(notice.begin(), notice.end(), [](char c) { return c & 0x80; }));
        std::istringstream lines(notice);
        for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 998U);
    }
    clear();
    send({"--notify", "failure"});
    deliver("printf 'no \\303\\251\\tx\\ry' >&2; exit 67");
    EXPECT_THAT(notices(), ElementsAre(HasSubstr("\r\nDiagnostic-code: smtp;exit code 67: no ???x?y\r\n")));
}

TEST_F(QueueNoticeTest, MakesNoNoticeOfANoticeOrForNobody) {
    const Words everything{"--channel", "DSN"};
    send({});
    send({"--notify", "failure"});
    EXPECT_EQ(deliver("exit 1", everything).out, "delivered 0, deferred 0, failed 2, held 2\n");
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
    EXPECT_EQ(deliver("exit 67").out, "delivered 0, deferred 1, failed 0, held 0\n");
    EXPECT_THAT(listed(), ElementsAre(HasSubstr("ann@x.y waiting 1 " + reason)));
    configure(full + "Lifetime=1s\n");
    MQHoldEntry(id.c_str(), MQ_ALL, "", "test");  // and so due at once
    MQReleaseEntry(id.c_str(), MQ_ALL, "test");
    deliver("exit 67");
    EXPECT_THAT(listed(), ElementsAre(HasSubstr("ann@x.y held 2 " + reason)));
    MQReleaseEntry(id.c_str(), MQ_ALL, "test");
    const Ended delivered = deliver("exit 0");
    EXPECT_EQ(delivered.out, "delivered 1, deferred 0, failed 0, held 0\n") << "and not once more";
    EXPECT_THAT(delivered.err, HasSubstr("the sender has not been told; "));
}

TEST_F(QueueNoticeTest, MakesASecondNoticeAfterACrashAndNeverNone) {
    send({});
    const pid_t child = ::fork();
    if (child == 0) {
        MQConsumer* const consumer = MQOpenConsumer("one that dies");
        MQEntry* claimed = nullptr;
        if (MQClaim(consumer, nullptr, 1, 300, &claimed) == 1) command::tell_sender(*claimed, {false, "5.0.0", "no"});
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
