// vel check and vel headers.
#include <nlohmann/json.hpp>

#include "tests/tools/run_vel.h"

namespace vel::test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string kMime = "MIME-Version: 1.0\n";
const std::string kMixed = kMime + "Content-Type: multipart/mixed; boundary=b\n\n";

class CheckTest : public CommandTest {};

struct Checked {
    std::string message;
    std::string findings;  // "severity line start-end field part: the library's words" each, "|" between them
};

std::string line_of(const Json& finding) {
    std::string text = finding["severity"].get<std::string>() + " " + finding["line"].dump() + " " +
                       finding["start"].dump() + "-" + finding["end"].dump();
    if (!finding["field"].is_null()) text += " " + finding["field"].get<std::string>();
    if (!finding["part"].is_null()) text += " part " + finding["part"].dump();
    return finding["said"].is_null() ? text : text + ": " + finding["said"].get<std::string>();
}

bool said(const Json& findings, const Json& text) {
    return std::any_of(findings.begin(), findings.end(), [&](const Json& f) { return f["said"] == text; });
}

TEST_F(CheckTest, TellsWhatIsWrongAndWhere) {
    const std::string refusal = ": ParseMimeMessage: not a valid MIME message.";
    const std::string no_id = " Content-ID: \"content-id:\" field invalid.";
    std::string folds;
    for (int i = 0; i < 80; ++i) folds += " " + std::string(1000, 'x') + "\n";
    const std::vector<Checked> rows{
        {"Subject: x\n\nbody\n", ""},
        {"", ""},
        {"Content-ID: x\n\nbody\n", ""},
        {"Subject: x\nDate: soon\n enough\nto you\nand: me\nyes\n\n", "remark 2 12-12 Date|remark 4 33-33"},
        {kMixed + "--b\nContent-ID: x\n\none\n--b\nContent-Type: text/plain; x\n y\n\ntwo\n--b--\n",
         "fault 5 69-84" + no_id + "|fault 5 69-69" + refusal +
             "|fault 9 96-129 Content-Type: Invalid parm in \"content-type:\" header: x\r\n"},
        {kMime + "Content-Type: plain\n\n",
         "fault 2 19-40 Content-Type: \"content-type:\" field invalid. Defaulting to application/octet-stream."},
        {kMime + "Content-Type: multipart/mixed\n\nx\n",
         "fault 2 19-50 Content-Type|fault 2 19-19: ParseMimeMessage: boundary line is missing."},
        {kMixed + "x\n", "fault 2 19-62 Content-Type|fault 2 19-19" + refusal},
        {kMixed + "--b\nContent-ID: x\n\none\n--b\n\ntwo\n",
         "fault 5 69-84" + no_id + "|fault 5 69-69" + refusal + "|fault 9 96-103: ParseMimeMessage: getline failed."},
        {kMixed + "--b\nContent-Transfer-Encoding: base64\n\n!!!\n--b\nthree\n--b--\n",
         "fault 7 106-111 part 1|fault 9 116-123 part 2"},
        {kMixed + "--b\nContent-Type: message/rfc822\n\nSubject: x\n\nbody\n",
         "fault 10 121-121 part 1: ParseMimeMessage: getline failed."},
        {kMixed + "text\n--b--\n", "fault 4 64-70"},
        // A field that comes to light in a copy.
        {kMixed + "--b\nContent-Type: message/rfc822\nContent-Type: multipart/mixed; boundary=in\n\nContent-ID: "
                  "x\n\none\n--b--\n",
         "fault 6 99-143 Content-Type|fault 6 99-99" + refusal + "|fault 8 145-160" + no_id},
        {"From: a@b, two words\nCc: bad addr\nTo: nobody: ;\nX: " + std::string(2000, 'x') + "\nnope\n\n",
         "remark 1 0-0 From|remark 2 22-22 Cc|remark 4 1075-1075|remark 5 2056-2056"},
        {"Subject: x\n" + folds + "\n", "fault 67 65207-65207: too many headers to parse."},
    };
    for (const Checked& row : rows) {
        SCOPED_TRACE(row.message);
        const Ended ended = run({"check", "--json", "-"}, crlf(row.message));
        ASSERT_TRUE(Json::accept(ended.out)) << ended.err;
        const Json json = Json::parse(ended.out);
        std::string found;
        for (const Json& finding : json["findings"]) found += (found.empty() ? "" : "|") + line_of(finding);
        EXPECT_EQ(found, row.findings);
        const bool faulty = found.find("fault") != std::string::npos;
        EXPECT_EQ(ended.exit, faulty ? 65 : 0);
        EXPECT_EQ(json["clean"], !faulty);
        for (const Json& message : json["messages"]) {
            EXPECT_TRUE(message["level"] != 1 || said(json["findings"], message["text"])) << message;
        }
        EXPECT_THAT(ended.err, IsEmpty());
    }
}

TEST_F(CheckTest, SpeaksToPeople) {
    EXPECT_EQ(run({"check", "-"}, kMime + "Content-ID: 1\x1b\n\n").out,
              "-:1: remark: lines end in bare LF; offsets are those of a copy with CR LF, line numbers hold (byte 0)\n"
              "-:2: fault: Content-ID is no identifier of the form <local@domain> (bytes 19-35; the library: "
              "\"content-id:\" field invalid.)\n"
              "-:2: fault: refused; read from a copy without Content-ID (line 2) (byte 19; the library: "
              "ParseMimeMessage: not a valid MIME message.)\n");
    EXPECT_EQ(run({"check", "-"}, "A: b\r\n\r\n").out, "-: no fault\n");
}

const std::string kHeader =
    "#Fsender\nFrom a@b Mon Feb  1 10:20:30 1999\nReceived: one\nReceived: two\nDate: Mon, 1 Feb 1999 10:20:30 -0500\n"
    "FROM: Ann Lee <ann@a.b> (x)\nTo: T: c@d, e@f;,\n two words, g@h\nTo: i\nSubject: a\n b\x1b\nX-Other: y\nno field\n"
    "Status: RO\n\nSubject: body\n";

TEST_F(CheckTest, ShowsTheHeader) {
    const std::string message = crlf(kHeader);
    EXPECT_EQ(run({"headers", "-"}, message).out,
              "-: 15 header lines\n"
              "envelope    #Fsender\n"
              "From line   a@b Mon Feb  1 10:20:30 1999\n"
              "Date        Mon, 1 Feb 1999 10:20:30 -0500\n"
              "From        Ann Lee <ann@a.b> (x)\n"
              "To          T: c@d, e@f;\n"
              "            g@h\n"
              "            i\n"
              "Subject     a b\\x1b\n"
              "Status      RO\n"
              "Received    one\n"
              "            two\n"
              "other       X-other: y\n"
              "no field    no field\n"
              "no address  To: two words\n");
    const Ended ended = run({"headers", "--json", file("m.eml", message)});
    EXPECT_EQ(ended.exit, 0);
    const Json json = Json::parse(ended.out);
    EXPECT_EQ(json["subject"], "a\r\n\tb\x1b");
    EXPECT_EQ(json["to"].size(), 3u);
    EXPECT_EQ(json["from"][0]["text"], "Ann Lee <ann@a.b> (x)");
    EXPECT_EQ(json["date"]["seconds_since_1970"], 917882430);
    EXPECT_EQ(json["status_line"], 14);
    EXPECT_EQ(json["received"], Json({"one", "two"}));
    EXPECT_EQ(json["cc"], nullptr);
    EXPECT_THAT(run({"headers", "-"}, "Date: soon\n\n").out, HasSubstr("not readable; the library takes the current"));
}

TEST_F(CheckTest, ShowsAPartsHeaderUpToItsBlankLine) {
    const std::string message =
        crlf(kMixed + "Subject: preamble\n--b\nContent-Type: message/rfc822\n\nSubject: inner\n\nx\n--b--\n");
    const std::string path = file("m.eml", message);
    const std::vector<std::pair<std::string, Json>> rows{{"0", nullptr}, {"1", nullptr}, {"2", "inner"}};
    for (const auto& [part, subject] : rows) {
        const Json json = Json::parse(run({"headers", "--json", "--part", part, path}).out);
        EXPECT_EQ(json["subject"], subject) << part;
        EXPECT_EQ(json["part"].dump(), part);
    }
    EXPECT_EQ(run({"headers", "--part", "3", path}).exit, 65);
}

}  // namespace
}  // namespace vel::test
