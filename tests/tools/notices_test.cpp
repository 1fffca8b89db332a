// vel dsn and vel notify: what goes into the queue, and what is refused.
#include "tests/tools/sending_place.h"

namespace vel::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

using Arguments = std::vector<std::string>;

class NoticesTest : public SendingTest {
  protected:
    NoticesTest() {
        const std::filesystem::path program(VEL_COMMAND);
        configure("[Connection]\nGatewayHostName=gw\nGatewayDomain=corp\n[Config]\nInstallDirectory=" +
                  (program.parent_path().parent_path() / "share" / "vel").string() + "\n");
    }

    std::string queued(const Arguments& options) {
        Arguments arguments{"send", "-", "--to", "ann@x.y"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Ended sent = run(arguments, "Subject: s\n\nbody\n");
        EXPECT_EQ(sent.exit, 0) << sent.err;
        return sent.out.substr(0, sent.out.find('\n'));
    }

    // What the command says, and then "CHANNEL RECIPIENT: " and the message that it has put into the queue.
    std::string sent(const Arguments& arguments, const std::string& standard_input) {
        const Arguments before = ids();
        const Ended ended = run(arguments, standard_input);
        std::string text = ended.exit == 0 ? ended.out : std::to_string(ended.exit) + " " + ended.err;
        for (const std::string& id : ids()) {
            if (std::find(before.begin(), before.end(), id) != before.end()) continue;
            const OwnedEntry entry = this->entry(id);
            text.append(entry->recipients[0].channel).append(" ").append(entry->recipients[0].address);
            text.append(": ").append(content(entry->path));
        }
        return text;
    }

    std::string report(const std::string& message, const std::string& recipient, const Arguments& options = {},
                       const std::string& text = "Gone.\n") {
        Arguments arguments{"dsn", message, "--subject", "Z\xc3\xbcrich", "--text", "-", "--recipient", recipient};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return sent(arguments, text);
    }
};

constexpr const char* kFailed = "final=ann@x.y;action=failed;status=5.1.1";

TEST_F(NoticesTest, ReportsByTheEnvelopeOfTheQueue) {
    const std::string id = queued({"--from", "joe@x.y", "--envid", "a+2Bb", "--ret", "full"});
    const std::string told = report(id,
                                    "final=Ann <ann@x.y>; action=Failed;status=5.1.1;original=x400;/S=a;remote=mx.x.y;"
                                    "diagnostic=550 no; gone;last-attempt=Mon, 1 Feb 1999 10:20:30 GMT;",
                                    {},
                                    "Gr\xc3\xbc\xc3\x9f"
                                    "e\n");
    EXPECT_THAT(told, StartsWith("reported to joe@x.y\nDSN joe@x.y: "));
    EXPECT_THAT(told, HasSubstr("Subject: =?UTF-8?"));
    EXPECT_THAT(told, HasSubstr("Gr=C3=BC=C3=9Fe"));
    EXPECT_THAT(told, HasSubstr("\r\nOriginal-Envelope-Id: a+b\r\nReporting-MTA: DNS; gw.corp\r\nArrival-Date: "));
    EXPECT_THAT(told, HasSubstr("\r\n\r\nOriginal-Recipient: x400;/S=a\r\nFinal-Recipient: rfc822;ann@x.y\r\n"
                                "Action: failed\r\nStatus: 5.1.1\r\nRemote-MTA: DNS; mx.x.y\r\n"
                                "Diagnostic-code: smtp;550 no; gone\r\n"
                                "Last-attempt-date: Mon, 1 Feb 1999 10:20:30 +0000\r\n\r\n"));
    EXPECT_THAT(told, HasSubstr("Subject: s\r\n\r\nbody\r\n"));
    const Ended read = run({"dsn", "--read", "-"}, told.substr(told.find("Received")));
    EXPECT_EQ(read.exit, 0) << read.err;
    EXPECT_THAT(read.out, HasSubstr("permanent failure"));
}

TEST_F(NoticesTest, ReportsByWhatTheCommandLineSays) {
    const std::string id = queued({"--from", "<>"});
    EXPECT_THAT(report(id, kFailed), StartsWith("sent to the postmaster\nDSN postmaster@gw.corp: "));
    const std::string base = file("letter.msg", "Subject: s\r\n\r\nbody\r\n");
    const std::string told = report(base, kFailed, {"--sender", "joe@x.y", "--ret", "hdrs", "--json"});
    EXPECT_THAT(told, StartsWith("{\"outcome\":\"reported\",\"to\":\"joe@x.y\"}\nDSN joe@x.y: "));
    EXPECT_EQ(told.find("body"), std::string::npos);
    EXPECT_THAT(report(base, kFailed), StartsWith("66 vel: letter: no such entry in the queue"));
    EXPECT_THAT(report("none", kFailed, {"--sender", "joe@x.y"}), StartsWith("66 vel: none: "));
}

TEST_F(NoticesTest, RefusesWhatNoReportCanSay) {
    const std::string id = queued({"--from", "joe@x.y"});
    const std::string good = std::string(kFailed) + ";";
    const Arguments rows = {
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
    for (const std::string& row : rows) EXPECT_THAT(report(id, row), StartsWith("64 vel: --recipient: ")) << row;
    EXPECT_THAT(report(id, kFailed, {"--envid", "a b"}), StartsWith("64 vel"));
    EXPECT_THAT(report(id, kFailed, {"--read"}), StartsWith("64 vel"));
    EXPECT_THAT(report(id, kFailed, {}, std::string(999, 'a')), StartsWith("65 vel: -: "));
    EXPECT_THAT(sent({"dsn", id, "--subject", "s"}, ""), StartsWith("64 vel: a report needs"));
    EXPECT_EQ(ids().size(), 1u);
}

TEST_F(NoticesTest, NotifiesWithFilesOfTheGatewaysTypes) {
    Arguments arguments{"notify", "--to", "Ann <ann@x.y>", "joe@x.y", "--subject", "s", "--text", "-", "--attach"};
    arguments.push_back(file("plain.jpg", "ascii\n"));
    arguments.push_back(file("photo.none", "\xff"));
    arguments.push_back(file("photo.PNG", "\xff"));
    const std::string told = sent(arguments, "text\n");
    const std::string id = told.substr(0, told.find('\n'));
    ASSERT_TRUE(entry(id)) << told;
    EXPECT_EQ(entry(id)->recipientCount, 2);
    EXPECT_STREQ(entry(id)->sender.address, "postmaster@gw.corp");
    EXPECT_THAT(told, StartsWith(id + "\nsmtp ann@x.y: "));
    EXPECT_THAT(told, HasSubstr("From: postmaster@gw.corp\r\nTo: Ann <ann@x.y>,"));
    EXPECT_THAT(told, HasSubstr("text/basic; charset=\"us-ascii\"; name=\"plain.jpg\""));
    EXPECT_THAT(told, HasSubstr("application/x-unknown; name=\"photo.none\""));
    EXPECT_THAT(told, HasSubstr("image/png; name=\"photo.PNG\""));
    EXPECT_THAT(told, HasSubstr("\r\n\r\n/w==\r\n"));

    file("ostra.ini",
         "[Gateway]\nQueueDirectory=" + (directory() / "queue").string() + "\n[Queue]\nMinimumFree=99999999\n");
    EXPECT_THAT(sent(arguments, "text\n"), StartsWith("78 vel: --from "));
    const Arguments refused{"notify", "--to", "a@x.y", "--subject", "s", "--text", "-", "--from", "joe@x.y"};
    EXPECT_THAT(sent(refused, "text\n"), StartsWith("75 vel: the queue has not taken the message"));
    EXPECT_EQ(ids().size(), 1u);
}

}  // namespace
}  // namespace vel::test
