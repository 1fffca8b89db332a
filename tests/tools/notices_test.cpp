// vel bounce, dsn, notify and log: what goes into the queue, and what is refused.
#include "tests/tools/sending_place.h"

namespace vel::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using Arguments = std::vector<std::string>;

constexpr const char* kFailed = "final=ann@x.y;action=failed;status=5.1.1";
const std::string kMessage = "Subject: s\r\n\r\nbody\r\n";

class NoticesTest : public SendingTest {
  protected:
    std::string bounced(const std::string& message, const Arguments& options = {"--reason", "a"}) const {
        return told_about("bounce", message, options, "");
    }

    std::string reported(const std::string& message, const std::string& recipient, Arguments options = {},
                         const std::string& text = "Gone.\n") const {
        options.insert(options.end(), {"--subject", "Z\xc3\xbcrich", "--text", "-", "--recipient", recipient});
        return told_about("dsn", message, options, text);
    }

    // A message file that the queue does not know, and what it is called without ".msg".
    std::string letter() const {
        const std::string path = file("letter.msg", kMessage);
        return path.substr(0, path.size() - 4);
    }

  private:
    std::string told_about(const char* verb, const std::string& message, const Arguments& options,
                           const std::string& text) const {
        Arguments arguments{verb, message};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return told(arguments, text);
    }
};

TEST_F(NoticesTest, ReturnsAMessageToItsSenderOrThePostmaster) {
    const std::string id = queued({"--from", "joe@x.y"}), nobodys = queued({"--from", "<>"});
    const std::string path = read_path(id), base = path.substr(0, path.size() - 4);
    for (const std::string& name : {id, path, base}) {
        EXPECT_THAT(bounced(name, {"--reason", "no such user", "try later"}),
                    AllOf(StartsWith("bounced to joe@x.y\nDSN joe@x.y: Received"), HasSubstr(kMessage),
                          HasSubstr("\r\n\r\nno such user\r\ntry later\r\nThe original message follows.\r\n")));
    }
    const std::string to_postmaster = "sent to the postmaster\nDSN postmaster@gw.corp: ";
    EXPECT_THAT(bounced(id, {"--reason", "a", "--sender", "Ann <ann@x.y>", "--json"}),
                StartsWith("{\"outcome\":\"bounced\",\"to\":\"ann@x.y\"}\nDSN ann@x.y: "));
    EXPECT_THAT(bounced(id, {"--reason", "a", "--to-postmaster"}), StartsWith(to_postmaster));
    EXPECT_THAT(bounced(id, {"--reason", "a", "--header-only"}),
                AllOf(StartsWith(to_postmaster), Not(HasSubstr("body"))));
    EXPECT_THAT(bounced(letter(), {"--reason", "a", "--sender", "joe@x.y"}), StartsWith("bounced to joe@x.y\nDSN "));
    EXPECT_EQ(bounced(nobodys), "discarded: nobody has sent it\n");
    EXPECT_EQ(bounced(nobodys, {"--reason", "a", "--json"}), "{\"outcome\":\"discarded\",\"to\":null}\n");
    configure("[Options]\nBounceToPostmaster=YES\n");
    EXPECT_THAT(bounced(id, {"--reason", "a", "--sender", "<>"}), StartsWith(to_postmaster));
}

TEST_F(NoticesTest, ReportsByTheEnvelopeOfTheQueue) {
    const std::string id = queued({"--from", "joe@x.y", "--envid", "a+2Bb", "--ret", "full"});
    const std::string report =
        reported(id,
                 "final=Ann <ann@x.y>; action=Failed;status=5.1.1;original=x400;/S=a;remote=mx.x.y;"
                 "diagnostic=550 no; gone;last-attempt=Mon, 1 Feb 1999 10:20:30 GMT;",
                 {},
                 "Gr\xc3\xbc\xc3\x9f"
                 "e\n");
    EXPECT_THAT(report, StartsWith("reported to joe@x.y\nDSN joe@x.y: "));
    for (const char* text :
         {"Subject: =?UTF-8?", "Gr=C3=BC=C3=9Fe", "Subject: s\r\n\r\nbody\r\n",
          "\r\nOriginal-Envelope-Id: a+b\r\nReporting-MTA: DNS; gw.corp\r\nArrival-Date: ",
          "\r\n\r\nOriginal-Recipient: x400;/S=a\r\nFinal-Recipient: rfc822;ann@x.y\r\nAction: failed\r\n"
          "Status: 5.1.1\r\nRemote-MTA: DNS; mx.x.y\r\nDiagnostic-code: smtp;550 no; gone\r\n"
          "Last-attempt-date: Mon, 1 Feb 1999 10:20:30 +0000\r\n\r\n"}) {
        EXPECT_THAT(report, HasSubstr(text));
    }
    EXPECT_THAT(run({"dsn", "--read", "-"}, report.substr(report.find("Received"))).out,
                HasSubstr("permanent failure"));
    EXPECT_THAT(reported(queued({"--from", "<>"}), kFailed),
                StartsWith("sent to the postmaster\nDSN postmaster@gw.corp: "));
    EXPECT_THAT(
        reported(letter(), kFailed, {"--sender", "joe@x.y", "--ret", "hdrs", "--json"}),
        AllOf(StartsWith("{\"outcome\":\"reported\",\"to\":\"joe@x.y\"}\nDSN joe@x.y: "), Not(HasSubstr("body"))));
}

TEST_F(NoticesTest, RefuseWhatNoNoticeCanSay) {
    const std::string id = queued({"--from", "joe@x.y"}), good = std::string(kFailed) + ";";
    const Arguments recipients{
        "final=ann@x.y;action=failed",
        "ann@x.y;action=failed;status=5.1.1",
        "final=ann@x.y;action=gone;status=5.1.1",
        "final=ann@x.y;action=failed;status=5.1",
        "final=ann@x.y;action=failed;status=5.1.1234",
        "final=ann@x.y;action=failed;status=3.1.1",
        good + "status=5.1.1",
        good + "color=red",
        good + "remote=",
        good + "remote=" + std::string(256, 'a'),
        good + "diagnostic=" + std::string(901, 'a'),
        good + "diagnostic=a\r\nStatus: 2.0.0",
        good + "diagnostic=gel\xc3\xb6scht",
        good + "will-retry=soon",
    };
    for (const std::string& row : recipients)
        EXPECT_THAT(reported(id, row), StartsWith("64 vel: --recipient: ")) << row;
    EXPECT_THAT(reported(id, kFailed, {"--envid", "a b"}), StartsWith("64 vel"));
    EXPECT_THAT(reported(id, kFailed, {"--read"}), StartsWith("64 vel"));
    EXPECT_THAT(reported(id, kFailed, {}, std::string(999, 'a')), StartsWith("65 vel: -: "));
    EXPECT_THAT(told({"dsn", id, "--subject", "s"}), StartsWith("64 vel: a report needs"));
    const std::vector<Arguments> bounces{
        {"--json"},
        {"--reason", "a\nb"},
        {"--reason", "gel\xc3\xb6scht"},
        {"--reason", "a", "--header-only", "--sender", "joe@x.y"},
        {"--reason", "a", "--to-postmaster", "--header-only"},
    };
    for (const Arguments& row : bounces) EXPECT_THAT(bounced(id, row), StartsWith("64 vel")) << row.back();
    EXPECT_THAT(bounced(id, {"--reason", "a", "--sender", "no address at"}), StartsWith("65 vel"));
    EXPECT_EQ(ids().size(), 1u);
}

TEST_F(NoticesTest, TellWhatIsMissing) {
    const std::string id = queued({"--from", "joe@x.y"}),
                      unknown = "no entry of the queue, and no file with .msg behind";
    EXPECT_THAT(bounced("none"), StartsWith("66 vel: none: " + unknown));
    EXPECT_THAT(bounced(letter()), HasSubstr("/letter: not in the queue, so --sender has to say who sent it"));
    std::filesystem::create_directory(directory() / "folder.msg");
    EXPECT_THAT(bounced((directory() / "folder").string(), {"--reason", "a", "--sender", "joe@x.y"}),
                StartsWith("75 vel: the message has not been returned; "));
    EXPECT_EQ(run({"log", "send", target()}).exit, kNoInput);
    EXPECT_THAT(told({"log", "send"}), StartsWith("78 vel: FILE is required while [Log] Target is no file: stderr"));
    std::filesystem::remove(read_path(id));
    EXPECT_THAT(bounced(id), AllOf(StartsWith("66 vel: /"), HasSubstr(".msg: No such file or directory")));
    file("ostra.ini", "[Gateway]\nQueueDirectory=" + (directory() / "queue").string() + "\n");
    for (const std::string& refused : {bounced(id), reported(id, kFailed), told({"log", "send", file("log", "")}),
                                       told({"queue", "run", "--channel", "smtp", "--once", "--", "true"}),
                                       told({"notify", "--to", "ann@x.y", "--subject", "s", "--text", "-"})}) {
        EXPECT_THAT(refused, StartsWith("78 vel: the gateway has no name: [Connection] "));
    }
    EXPECT_EQ(ids().size(), 1u);
}

TEST_F(NoticesTest, NotifyWithFilesOfTheGatewaysTypes) {
    const std::filesystem::path program(VEL_COMMAND);
    configure("[Config]\nInstallDirectory=" + (program.parent_path().parent_path() / "share" / "vel").string());
    Arguments arguments{"notify", "--to", "Ann <ann@x.y>", "joe@x.y", "--subject", "s", "--text", "-", "--attach"};
    arguments.push_back(file("plain.jpg", "ascii\n"));
    arguments.push_back(file("photo.none", "\xff"));
    arguments.push_back(file("photo.PNG", "\xff"));
    const std::string message = told(arguments, "text\n"), id = message.substr(0, message.find('\n'));
    ASSERT_TRUE(entry(id)) << message;
    EXPECT_EQ(entry(id)->recipientCount, 2);
    EXPECT_STREQ(entry(id)->sender.address, "postmaster@gw.corp");
    EXPECT_THAT(message, StartsWith(id + "\nsmtp ann@x.y: "));
    for (const char* text :
         {"From: postmaster@gw.corp\r\nTo: Ann <ann@x.y>,", "text/basic; charset=\"us-ascii\"; name=\"plain.jpg\"",
          "application/x-unknown; name=\"photo.none\"", "image/png; name=\"photo.PNG\"", "\r\n\r\n/w==\r\n"}) {
        EXPECT_THAT(message, HasSubstr(text));
    }
}

TEST_F(NoticesTest, TellWhenTheQueueRefusesThem) {
    const std::string log = file("ostra.log.1", "the last line\n");
    EXPECT_THAT(told({"log", "send", log}),
                AllOf(StartsWith("sent to the postmaster\nDSN postmaster@gw.corp: "),
                      HasSubstr("\r\nSubject: old log file ostra.log.1\r\n"), HasSubstr("\r\n\r\nthe last line\n")));
    configure("MinimumFree=99999999\n[Log]\nTarget=" + log.substr(0, log.size() - 2));
    EXPECT_THAT(told({"log", "send"}), StartsWith("75 vel: the log has not been sent; "));
    EXPECT_THAT(
        told({"notify", "--to", "a@x.y", "--subject", "s", "--text", "-"}, "text\n"),
        StartsWith("75 vel: the queue has not taken the message; CreateMQEntry: less space is free than [Queue] "));
    EXPECT_EQ(ids().size(), 1u);
}

}  // namespace
}  // namespace vel::test
