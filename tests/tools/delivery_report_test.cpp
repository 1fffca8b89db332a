// vel dsn --read: reports of many mailers, and what is none.
#include <nlohmann/json.hpp>

#include "tests/tools/run_vel.h"

namespace vel::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using Json = nlohmann::json;

std::string part(const std::string& fields, const std::string& body) { return "--b\n" + fields + "\n\n" + body + "\n"; }

std::string report(const std::string& parts) {
    return "From: MAILER-DAEMON@mx.example\nMIME-Version: 1.0\nContent-Type: multipart/report; boundary=b\n\n" + parts +
           "--b--\n";
}

// A report of one part of fields for programs.
std::string status(const std::string& fields, const std::string& type = "message/delivery-status") {
    return report(part("Content-Type: " + type, fields));
}

// A message that a mailer has written in plain text.
std::string text(const std::string& body) {
    return "From: Mail Delivery System <MAILER-DAEMON@mx.example>\nSubject: news\n\n" + body + "\n";
}

std::string enclosed(const std::string& message) {
    return "From: ann@a.example\nMIME-Version: 1.0\nContent-Type: multipart/mixed; boundary=f\n\n--f\n\nSee below.\n"
           "--f\nContent-Type: message/rfc822\n\n" +
           message + "\n--f--\n";
}

const std::string kFailed = "Final-Recipient: rfc822; a@x\nAction: failed\nStatus: 5.1.1\n";
const std::string kReturned = "Received: from a\nMessage-ID: <m@x>\nSubject: =?utf-8?q?Gr=C3=BC=C3=9Fe?=\n\nbody\n";

class DeliveryReportTest : public CommandTest {
  protected:
    Json read(const std::string& message) const {
        const Ended ended = run({"dsn", "--read", "--json", "-"}, crlf(message));
        return Json::parse(ended.out, nullptr, false);
    }

    // "address verdict status host: reason" of each recipient; the error when there is no report.
    static std::string told(const Json& report) {
        if (!report.contains("recipients")) return report.dump();
        const auto shown = [](const Json& text) { return text.is_null() ? "-" : text.get<std::string>(); };
        std::string result;
        for (const Json& one : report["recipients"]) {
            result += shown(one["address"]) + " " + shown(one["verdict"]) + " " + shown(one["status"]) + " " +
                      shown(one["remote_mta"]) + ": " + shown(one["reason"]) + "\n";
        }
        return result;
    }
};

TEST_F(DeliveryReportTest, TellsWhatTheFieldsSay) {
    const struct {
        const char* name;
        std::string message;
        std::string told;
    } rows[] = {
        {"every action",
         status("Reporting-MTA: dns; mx\n\nFinal-Recipient: rfc822;a@x\nAction: delivered\nStatus: 2.0.0\n\n"
                "Final-Recipient: rfc822;b@x\nAction: Relayed\nStatus: 2.0.0\n\n"
                "Final-Recipient: rfc822;c@x\nAction: expanded\nStatus: 2.0.0\n\n"
                "Final-Recipient: rfc822;d@x\nAction: delayed\nStatus: 5.0.0\n\n"
                "Final-Recipient: rfc822;e@x\nAction: failed\nStatus: 4.4.7\n\n"
                "Final-Recipient: rfc822;f@x\nAction: failed (given up)\nStatus: 5.2.2\n"),
         "a@x delivered 2.0.0 -: -\nb@x relayed 2.0.0 -: -\nc@x expanded 2.0.0 -: -\nd@x delayed 5.0.0 -: -\n"
         "e@x temporary failure 4.4.7 -: -\nf@x permanent failure 5.2.2 -: -\n"},
        {"continued diagnostic, remote host, comment behind the status",
         status("Original-Recipient: rfc822;a@y\nFinal-Recipient: LOCAL; <a@x>\nAction: failed\n"
                "Status: 5.0.0 (no)\nRemote-MTA: dns; mx.x\nDiagnostic-Code: smtp; 550-no\n such\n\tuser; sorry\n"),
         "a@x permanent failure 5.0.0 mx.x: 550-no such user; sorry\n"},
        {"original recipient only, no action", status("Original-Recipient:rfc822;a@x\nStatus:5.5.0\n"),
         "a@x permanent failure 5.5.0 -: -\n"},
        {"no enhanced code", status("Final-Recipient: a@x\nAction: failed\nStatus: 452\n"),
         "a@x temporary failure 452 -: -\n"},
        {"the code in the diagnostic", status("Final-Recipient: rfc822;a@x\nDiagnostic-Code: smtp; 421 from 5.1.1.9\n"),
         "a@x temporary failure - -: 421 from 5.1.1.9\n"},
        {"neither action nor code", status("Final-Recipient: rfc822;a@x\nDiagnostic-Code: x; hm\n"),
         "a@x unknown - -: hm\n"},
        {"no blank line between, too many elsewhere, one diagnostic too many",
         status("Reporting-MTA: dns; mx\n" + kFailed + "Diagnostic-Code: x; 1\nDiagnostic-Code: x; 2\n" +
                "Final-Recipient: rfc822; b@x\nAction: delayed\n\n\n\nFinal-Recipient: rfc822; c@x\nAction: failed\n"),
         "a@x permanent failure 5.1.1 -: 1\nb@x delayed - -: -\nc@x permanent failure - -: -\n"},
        {"no recipient named", status("Reporting-MTA: dns; mx\n\nAction: failed\nStatus: 5.1.1\n"),
         "- permanent failure 5.1.1 -: -\n"},
        {"UTF-8 addresses",
         status("Final-Recipient: utf-8; J\\x{F6}rg@x\\x{110000}\\x{41\nAction: failed\nStatus: 5.6.7\n",
                "message/global-delivery-status"),
         "J\xc3\xb6rg@x\\x{110000}\\x{41 permanent failure 5.6.7 -: -\n"},
        {"base64",
         status("RmluYWwtUmVjaXBpZW50OiByZmM4MjI7IGFAeApBY3Rpb246IGZhaWxlZAo=",
                "message/delivery-status\nContent-Transfer-Encoding: base64"),
         "a@x permanent failure - -: -\n"},
        {"in a nested multipart",
         report(part("Content-Type: multipart/mixed; boundary=c",
                     "--c\nContent-Type: message/delivery-status\n\n" + kFailed + "\n--c--\n")),
         "a@x permanent failure 5.1.1 -: -\n"},
        {"forwarded", enclosed(status(kFailed)), "a@x permanent failure 5.1.1 -: -\n"},
        {"of a report",
         report(part("Content-Type: message/rfc822", status("Final-Recipient: rfc822; inner@x\nAction: failed\n")) +
                part("Content-Type: message/delivery-status", kFailed)),
         "a@x permanent failure 5.1.1 -: -\n"},
        {"cut short",
         "From: postmaster@x\nMIME-Version: 1.0\nContent-Type: multipart/report; boundary=b\n\n" +
             part("Content-Type: text/plain", "Sorry.") + "--b\nContent-Type: message/delivery-status\n\n" + kFailed +
             "Remote-MT",
         "a@x permanent failure 5.1.1 -: -\n"},
        {"a multipart that is none",
         "Return-Path: <>\nContent-Type: multipart/report\n\n" + part("Content-Type: message/delivery-status", kFailed),
         "a@x permanent failure 5.1.1 -: -\n"},
    };
    for (const auto& row : rows) EXPECT_EQ(told(read(row.message)), row.told) << row.name;
}

TEST_F(DeliveryReportTest, TellsWhatMailersWriteForPeople) {
    const struct {
        const char* name;
        std::string message;
        std::string told;
    } rows[] = {
        {"addresses with a colon, the reason below",
         text("Hi. This is the mailer at mx.example. I'm afraid I wasn't able to deliver your message to the\n"
              "following addresses. This is a permanent error.\n\n<a@x>:\nSorry, no mailbox here. (#5.1.1)\n\n"
              "<b@x>:\n192.0.2.5 failed after I sent the message.\nRemote host said: 451 try later\n\n"
              "--- Below this line is a copy of the message.\n\n<c@x>:\n"),
         "a@x permanent failure 5.1.1 -: Sorry, no mailbox here. (#5.1.1)\nb@x temporary failure - -: 192.0.2.5 "
         "failed after I sent the message. Remote host said: 451 try later\n"},
        {"indented addresses, the reason further in",
         text("A message that you sent could not be delivered to one or more of its\nrecipients. The following "
              "address(es) failed:\n\n  a@x\n    SMTP error after RCPT TO:<a@x>:\n    host mx.x [192.0.2.1]: 550 5.7.1 "
              "no\n  b@x\n    retry timeout exceeded\n\n------ This is a copy of the message. ------\n\nTo: c@x\n"),
         "a@x permanent failure 5.7.1 mx.x: SMTP error after RCPT TO:<a@x>: host mx.x [192.0.2.1]: 550 5.7.1 no\n"
         "b@x permanent failure - -: retry timeout exceeded\n"},
        {"the reason behind the address",
         text(
             "I'm sorry to have to inform you that your message could not\nbe delivered to one or more recipients.\n\n"
             "<a@x>: host mx.x[192.0.2.1] said: 550 5.2.2\n    full (in reply to RCPT TO command)\n\n<b@x>: unknown\n"),
         "a@x permanent failure 5.2.2 mx.x: host mx.x[192.0.2.1] said: 550 5.2.2 full (in reply to RCPT TO command)\n"
         "b@x permanent failure - -: unknown\n"},
        {"a delay, which mentions failure",
         text("THIS IS A WARNING ONLY.\n\nYour message could not be delivered for more than 4 hours.\nIt will be "
              "retried until it is 5 days old.\n\n<a@x>: connect to mx.x: timed out\n"),
         "a@x delayed - -: connect to mx.x: timed out\n"},
        {"lists under rules",
         text("   ----- The following addresses had permanent fatal errors -----\n<a@x>\n    (reason: 553 5.3.0 no)\n"
              "joe@x\n    (expanded from: <j@x>)\n\n   ----- The following addresses had transient non-fatal errors "
              "-----\n<c@x>\n\n   ----- Transcript of session follows -----\n... while talking to mx.x.:\n>>> DATA\n"
              "<<< 552 too large\n554 joe@x... Service unavailable\n<c@x>... Deferred: timed out\n"),
         "a@x permanent failure 5.3.0 -: 553 5.3.0 no\njoe@x permanent failure - mx.x: (expanded from: <j@x>)\n"
         "c@x delayed - mx.x: Deferred: timed out\n"},
        {"a transcript only",
         text("   ----- Transcript of session follows -----\n550 nobody@x... Host unknown\n421 4.4.2 <b@x>... "
              "Deferred\n\n   ----- Unsent message follows -----\n550 c@x... not this one\n"),
         "nobody@x permanent failure - -: 550 nobody@x... Host unknown\n"
         "b@x delayed 4.4.2 -: 421 4.4.2 <b@x>... Deferred\n"},
        {"labels, and a courtesy that is no reason",
         text("Your message cannot be delivered to the following recipients:\n\n  Recipient address: a@x\n  Reason: "
              "over "
              "quota\n\n  Recipient address: b@x\n\nPlease reply to postmaster@x if you think otherwise.\n"),
         "a@x permanent failure - -: over quota\nb@x permanent failure - -: -\n"},
        {"quotes and times",
         text("Your message did not reach some or all of the intended recipients.\n\nThe following recipient(s) could "
              "not be reached:\n\n      'a@x' on 1/2/2003 4:05 PM\n            There is no such account.\n"),
         "a@x permanent failure - -: There is no such account.\n"},
        {"details behind a blank line",
         text("Delivery to the following recipient failed permanently:\n\n     a@x\n\nTechnical details of permanent "
              "failure:\nThe server said: 550 5.1.1 no.\n\n----- Original message -----\n"),
         "a@x permanent failure 5.1.1 -: The server said: 550 5.1.1 no.\n"},
        {"in a sentence", text("Your message wasn't delivered to a@x because the address couldn't be found.\n"),
         "a@x permanent failure - -: the address couldn't be found.\n"},
        {"success",
         text("   ----- The following addresses had successful delivery notifications -----\n<a@x>  "
              "(relayed to non-DSN-aware mailer)\n<b@x>  (successfully delivered to mailbox)\n"),
         "a@x relayed - -: -\nb@x delivered - -: -\n"},
        {"several on a line, in quoted-printable",
         "Return-Path: <>\nMIME-Version: 1.0\nContent-Type: text/plain\nContent-Transfer-Encoding: "
         "quoted-printable\n\nFailed addresses follow:\n a=40x, B@X; a@x\n",
         "a@x permanent failure - -: -\nB@X permanent failure - -: -\n"},
        {"a field only", "X-Failed-Recipients: a@x,\n b@x\n\nSorry.\n",
         "a@x permanent failure - -: -\nb@x permanent failure - -: -\n"},
    };
    for (const auto& row : rows) EXPECT_EQ(told(read(row.message)), row.told) << row.name;
}

TEST_F(DeliveryReportTest, TellsWhatTheReportIsAbout) {
    const std::string fields = "Reporting-MTA: dns; mx\nOriginal-Envelope-Id: QQ1\nArrival-Date: then\n\n" + kFailed;
    const std::string failed = part("Content-Type: message/delivery-status", fields);
    for (const std::string& message :
         {report(failed + part("Content-Type: message/rfc822", kReturned)),
          report(failed + part("Content-Type: text/rfc822-headers", kReturned)),
          "Return-Path: <>\nContent-Type: multipart/report\n\n" + failed +
              part("Content-Type: message/rfc822\nContent-Disposition: inline", kReturned)}) {
        const Json told = read(message);
        EXPECT_EQ(told["message_id"], "<m@x>");
        EXPECT_EQ(told["subject"]["text"],
                  "Gr\xc3\xbc\xc3\x9f"
                  "e");
        EXPECT_EQ(told["envelope_id"], "QQ1");
        EXPECT_EQ(told["reporting_mta"], "mx");
    }
    const std::string old = "could not be delivered to:\n<a@x>\n\n   ----- Original message follows -----\n\n";
    EXPECT_EQ(read(text(old + kReturned))["message_id"], "<m@x>");
    EXPECT_EQ(read(text("could not be delivered to:\n<a@x>\n\n" + kReturned))["message_id"], "<m@x>");
}

TEST_F(DeliveryReportTest, SaysPlainlyWhatIsNoReport) {
    const std::string body = "The letter could not be delivered to:\n\n<a@x>: the house is empty\n\n" + kFailed;
    const struct {
        std::string message, says;
    } rows[] = {
        {"From: ann@x\nSubject: Re: Undelivered Mail\n\n" + body, "no mailer tells"},
        {text("> could not be delivered to:\n> <a@x>: unknown\nIs that so?"), "no mailer tells"},
        {status("Reporting-MTA: dns; mx\n"), "a delivery report that names no recipient"},
        {report(part("Content-Type: message/disposition-notification",
                     "Final-Recipient: rfc822;a@x\nDisposition: manual-action/MDN-sent-manually; displayed")),
         "a disposition notification"},
        {"", "no mailer tells"},
    };
    for (const auto& row : rows) {
        const Ended ended = run({"dsn", "--read", "-"}, crlf(row.message));
        EXPECT_EQ(ended.exit, kBadData) << row.message;
        EXPECT_THAT(ended.err, HasSubstr(row.says)) << row.message;
        EXPECT_EQ(ended.out, "");
    }
}

TEST_F(DeliveryReportTest, BearsMuchOfEverything) {
    std::string fields, lines = "could not be delivered to:\n";
    for (int i = 0; i < 60000; ++i) {
        const std::string address = std::to_string(i) + "@x";
        fields += "Final-Recipient: rfc822;" + address + "\nAction: failed\n\n";
        lines += "<" + address + ">: no\n";
    }
    for (const std::string& message : {status(fields), text(lines)}) {
        const std::string out = run({"dsn", "--read", "-"}, crlf(message)).out;
        EXPECT_THAT(out, HasSubstr("\n49999@x    permanent failure"));
        EXPECT_THAT(out, EndsWith("\nand 10000 more\n"));
    }
    const std::string long_text(1 << 20, 'n');
    const Json cut = read(status(kFailed + "Diagnostic-Code: smtp; 550 " + long_text + "\nRemote-MTA: dns; mx\n"));
    EXPECT_LT(cut["recipients"][0]["reason"].get<std::string>().size(), 1100u);
    EXPECT_EQ(cut["recipients"][0]["remote_mta"], "mx");
    std::string nested = kFailed;
    for (int i = 0; i < 50; ++i) {
        const std::string boundary = "b" + std::to_string(i);
        nested = "Return-Path: <>\nMIME-Version: 1.0\nContent-Type: multipart/report; boundary=" + boundary + "\n\n--" +
                 boundary + "\nContent-Type: message/" + (i == 0 ? "delivery-status" : "rfc822") + "\n\n" + nested +
                 "\n--" + boundary + "--\n";
    }
    EXPECT_EQ(told(read(nested)), "a@x permanent failure 5.1.1 -: -\n");
}

}  // namespace
}  // namespace vel::test
