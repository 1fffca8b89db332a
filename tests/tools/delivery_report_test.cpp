// vel dsn --read: reports of many mailers, and what is none.
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

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
std::string status(const std::string& fields) { return report(part("Content-Type: message/delivery-status", fields)); }

// A message that a mailer has written in plain text.
std::string text(const std::string& body) {
    return "From: Mail Delivery System <MAILER-DAEMON@mx.example>\nSubject: news\n\n" + body + "\n";
}

std::string message(const std::string& whole) { return whole; }

const std::string kFailed = "Final-Recipient: rfc822; a@x\nAction: failed\nStatus: 5.1.1\n";
const std::string kReturned =
    "Received: from a\nMessage-ID: <m@x>\nSubject: =?utf-8?q?Gr=C3=BC=C3=9Fe?=\nTo: a@x,\n b@x\nCc: c@x\n\nbody\n";

struct Row {
    std::string name, text, told;
};

// Rows of a file: "=== NAME", the text, "--->", what is told of the recipients.
std::vector<Row> rows_of(const std::string& name) {
    std::ifstream file(VEL_TEST_DATA "/reports/" + name);
    std::vector<Row> rows;
    bool tells = false;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("=== ")) {
            rows.push_back({line.substr(4), "", ""});
            tells = false;
        } else if (line == "--->") {
            tells = true;
        } else if (!line.empty() || !tells) {
            (tells ? rows.back().told : rows.back().text) += line + "\n";
        }
    }
    return rows;
}

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

TEST_F(DeliveryReportTest, TellsOfEachRecipient) {
    const struct {
        const char* file;
        std::string (*around)(const std::string& text);
    } tables[] = {{"fields.txt", status}, {"texts.txt", text}, {"messages.txt", message}};
    for (const auto& table : tables) {
        const std::vector<Row> rows = rows_of(table.file);
        EXPECT_FALSE(rows.empty()) << table.file;
        for (const Row& row : rows) EXPECT_EQ(told(read(table.around(row.text))), row.told) << row.name;
    }
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
        EXPECT_EQ(told["addressees"], "a@x, b@x, c@x");
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
        {report(part("Content-Type: message/feedback-report", "Feedback-Type: abuse")), "a feedback report"},
        {text("The service is down due to the following reason:\n\nann@x has been blocked."), "no mailer tells"},
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
    for (int i = 0; i < 50003; ++i) {
        const std::string address = std::to_string(i) + "@x";
        fields += "Final-Recipient: rfc822;" + address + "\nAction: failed\n\n";
        lines += "<" + address + ">: no\n";
    }
    for (const std::string& message : {status(fields), text(lines)}) {
        const std::string out = run({"dsn", "--read", "-"}, crlf(message)).out;
        EXPECT_THAT(out, HasSubstr("\n49999@x    permanent failure"));
        EXPECT_THAT(out, EndsWith("\nand 3 more\n"));
    }
    const std::string long_text(1 << 20, 'n');
    const Json cut = read(status(kFailed + "Diagnostic-Code: smtp; 550 " + long_text + "\nRemote-MTA: dns; mx\n"));
    EXPECT_LT(cut["recipients"][0]["reason"].get<std::string>().size(), 1100U);
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
