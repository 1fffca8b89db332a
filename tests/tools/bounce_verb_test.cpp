// vel bounce and vel log: who gets a message back, and the postmaster his log.
#include "tests/tools/sending_place.h"

namespace vel::test {
namespace {

using testing::HasSubstr;

class BounceVerbTest : public SendingTest {
  protected:
    BounceVerbTest() { configure("[Connection]\nGatewayHostName=gw\nGatewayDomain=corp\n"); }

    // Puts a message into the queue; its identifier.
    std::string queued(const std::string& sender) {
        const Ended sent = run({"send", "-", "--from", sender, "--to", "ann@x.y"}, "Subject: s\n\nbody\n");
        EXPECT_EQ(sent.exit, 0) << sent.err;
        return sent.out.substr(0, sent.out.find('\n'));
    }

    // What the command says, and then "RECIPIENT: " and the notice for each one that it has put into the queue.
    std::string bounced(std::vector<std::string> arguments) {
        const std::vector<std::string> before = ids();
        arguments.insert(arguments.begin(), "bounce");
        const Ended ended = run(arguments);
        std::string text = ended.exit == 0 ? ended.out : std::to_string(ended.exit) + " " + ended.err;
        for (const std::string& id : ids()) {
            if (std::find(before.begin(), before.end(), id) != before.end()) continue;
            const OwnedEntry notice = entry(id);
            EXPECT_STREQ(notice->recipients[0].channel, "DSN");
            text.append(notice->recipients[0].address).append(": ").append(content(notice->path));
        }
        return text;
    }
};

TEST_F(BounceVerbTest, ReturnsAMessageOfTheQueue) {
    const std::string id = queued("joe@x.y");
    const std::string path = entry(id)->path, base = path.substr(0, path.size() - 4);
    for (const std::string& name : {id, path, base}) {
        const std::string told = bounced({name, "--reason", "no such user", "try later"});
        EXPECT_TRUE(told.starts_with("bounced to joe@x.y\njoe@x.y: Received")) << told;
        EXPECT_THAT(told, HasSubstr("\r\n\r\nno such user\r\ntry later\r\nThe original message follows.\r\n"));
        EXPECT_THAT(told, HasSubstr("Subject: s\r\n\r\nbody\r\n"));
    }
    EXPECT_TRUE(bounced({id, "--reason", "a", "--sender", "Ann <ann@x.y>", "--json"})
                    .starts_with("{\"outcome\":\"bounced\",\"to\":\"ann@x.y\"}\nann@x.y: "));
    EXPECT_TRUE(
        bounced({id, "--reason", "a", "--to-postmaster"}).starts_with("sent to the postmaster\npostmaster@gw.corp: "));
    const std::string header = bounced({id, "--reason", "a", "--header-only"});
    EXPECT_TRUE(header.starts_with("sent to the postmaster\npostmaster@gw.corp: ")) << header;
    EXPECT_EQ(header.find("body"), std::string::npos);
}

TEST_F(BounceVerbTest, ReturnsAMessageFileToTheSenderThatIsSaid) {
    const std::string base =
        file("letter.msg", "Subject: s\r\n\r\nbody\r\n").substr(0, (directory() / "letter").string().size());
    EXPECT_TRUE(bounced({base, "--reason", "a", "--sender", "joe@x.y"}).starts_with("bounced to joe@x.y\njoe@x.y: "));
    EXPECT_EQ(bounced({base, "--reason", "a"}), "66 vel: letter: no such entry in the queue\n");
    EXPECT_EQ(bounced({"none", "--reason", "a"}), "66 vel: none: no such entry in the queue\n");
}

TEST_F(BounceVerbTest, DiscardsWhatNobodyHasSent) {
    const std::string id = queued("<>");
    EXPECT_EQ(bounced({id, "--reason", "a"}), "discarded: nobody has sent it\n");
    EXPECT_EQ(bounced({id, "--reason", "a", "--json"}), "{\"outcome\":\"discarded\",\"to\":null}\n");
    configure("[Options]\nBounceToPostmaster=YES\n[Connection]\nGatewayHostName=gw\nGatewayDomain=corp\n");
    EXPECT_TRUE(
        bounced({id, "--reason", "a", "--sender", "<>"}).starts_with("sent to the postmaster\npostmaster@gw.corp: "));
}

TEST_F(BounceVerbTest, RefusesWhatDoesNotGoTogetherOrIntoANotice) {
    const std::string id = queued("joe@x.y");
    const std::vector<std::vector<std::string>> rows = {
        {id},
        {id, "--reason", "a\nb"},
        {id, "--reason", "gel\xc3\xb6scht"},
        {id, "--reason", "a", "--header-only", "--sender", "joe@x.y"},
        {id, "--reason", "a", "--to-postmaster", "--header-only"},
    };
    for (const auto& row : rows) EXPECT_TRUE(bounced(row).starts_with("64 vel")) << row.back();
    EXPECT_TRUE(bounced({id, "--reason", "a", "--sender", "no address at"}).starts_with("65 vel"));
    std::filesystem::create_directory(directory() / "folder.msg");
    EXPECT_THAT(bounced({(directory() / "folder").string(), "--reason", "a", "--sender", "joe@x.y"}),
                HasSubstr("75 vel: the message has not been returned; "));
}

TEST_F(BounceVerbTest, MailsAnOldLog) {
    const std::string log = file("ostra.log.1", "the last line\n");
    EXPECT_EQ(run({"log", "send", log}).out, "sent to the postmaster\n");
    ASSERT_EQ(ids().size(), 1u);
    const OwnedEntry sent = entry(ids()[0]);
    EXPECT_STREQ(sent->recipients[0].address, "postmaster@gw.corp");
    EXPECT_THAT(content(sent->path), HasSubstr("\r\nSubject: old log file ostra.log.1\r\n"));
    EXPECT_THAT(content(sent->path), HasSubstr("\r\n\r\nthe last line\n"));
    EXPECT_EQ(run({"log", "send", log + "0"}).exit, kNoInput);
    EXPECT_EQ(run({"log", "send"}).exit, 75) << "the log is no file";
    file("ostra.ini", "[Gateway]\nQueueDirectory=" + (directory() / "queue").string() +
                          "\n[Queue]\nMinimumFree=99999999\n[Log]\nTarget=" + log.substr(0, log.size() - 2) + "\n");
    const Ended refused = run({"log", "send"});
    EXPECT_EQ(refused.exit, 75);
    EXPECT_THAT(refused.err, testing::StartsWith("vel: the log has not been sent; "));
    EXPECT_EQ(ids().size(), 1u);
}

}  // namespace
}  // namespace vel::test
