// vel show, and the program that makes text of HTML.
#include <fstream>
#include <sstream>

#include "tests/tools/run_vel.h"
#include "tools/io/exit_code.h"
#include "tools/io/filter.h"

namespace vel::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

std::string part(const std::string& fields, const std::string& body) { return "--b\n" + fields + "\n\n" + body + "\n"; }

std::string multipart(const std::string& subtype, const std::string& parts) {
    return "MIME-Version: 1.0\nContent-Type: multipart/" + subtype + "; boundary=b\n\n" + parts + "--b--\n";
}

const std::string kPlain = part("Content-Type: text/plain", "plain");
const std::string kHtml = part("Content-Type: text/html; charset=utf-8", "<p>html");
const std::string kEnriched = part("Content-Type: text/enriched", "<bold>x</bold>");

class ShowTest : public CommandTest {
  protected:
    // What stands below the heading.
    std::string shown(const std::string& message, std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"show", "-"});
        const std::string out = run(options, crlf(message)).out;
        return out.substr(out.find('\n') + 1);
    }

    // Puts a shell script in the place of w3m; shows a message in HTML by it.
    Ended show_by(const std::string& script,
                  const std::string& html = "; charset=iso-8859-1\n\ncaf\xe9 \x1b[2J") const {
        shell("");
        std::ofstream(directory() / "bin/w3m") << "#!/bin/bash\n" << script << "\n";
        std::filesystem::permissions(directory() / "bin/w3m", std::filesystem::perms::owner_all);
        file("m.eml", crlf("MIME-Version: 1.0\nContent-Type: text/html" + html));
        const int exit = shell("vel show --html-as-text m.eml > o 2> e");
        const std::string here = directory().string();
        return {exit, content(here + "/o"), content(here + "/e")};
    }

    // The process whose number stands in the file "pid".
    void await_end_of_process_in_file() const {
        const std::string process = "/proc/" + content((directory() / "pid").string());
        const std::string status = process.substr(0, process.find('\n')) + "/stat";
        await("the end of the program", [&] {
            std::ifstream stat(status);
            std::string line;
            return !std::getline(stat, line) || line.find(") Z ") != std::string::npos;
        });
    }
};

TEST_F(ShowTest, ShowsHeaderLinesTextsAndTheOtherParts) {
    EXPECT_EQ(
        shown(
            "subject : =?utf-8?q?Gr=C3=BC?=\n =?utf-8?q?=C3=9Fe?=\n!\nX-Subject: no\nTo: a@b,\n\tnobody: ;, two words\n"
            "FROM: =?utf-8?q?Lee=2C_Ann?= <a@b>\nDate: soon\nCC: =?x-klingon?q?c?= <c@d>\n" +
            multipart("mixed",
                      part("Content-Type: text/plain; charset=koi8-r\nContent-Transfer-Encoding: base64", "1MXL09Qb") +
                          part("Content-Disposition: attachment; filename*=utf-8''%C3%A9.txt", "attached") +
                          part("Content-Type: message/rfc822", "Subject: within\nTo: e@f\n\nenclosed\xff"))),
        "From     \"Lee, Ann\" <a@b>\n"
        "To       a@b\n"
        "         nobody: ;\n"
        "         two words\n"
        "Cc       =?x-klingon?q?c?= <c@d> (not converted)\n"
        "Date     soon\n"
        "Subject  Gr\xc3\xbc\xc3\x9f"
        "e\n"
        "\n"
        "\xd1\x82\xd0\xb5\xd0\xba\xd1\x81\xd1\x82\\x1b\n"
        "\n"
        "part 3, an enclosed message:\n"
        "\n"
        "To       e@f\n"
        "Subject  within\n"
        "\n"
        "enclosed\\xff\n"
        "\n"
        "part  size  type        name\n"
        "   2    10  text/plain  \xc3\xa9.txt\n");
}

TEST_F(ShowTest, ReadsOneFormOfAlternatives) {
    const std::string nested =
        part("Content-Type: multipart/related; boundary=c", "--c\nContent-Type: text/html\n\nh\n--c--");
    struct {
        const char* what;
        std::string parts, text;
        std::vector<int> listed;
    } const rows[] = {
        {"plain first", kPlain + kHtml, "\nplain\n", {2}},
        {"plain last", kHtml + kPlain, "\nplain\n", {1}},
        {"HTML only", kEnriched + kHtml, "\npart 2 is text in HTML only: --html-as-text shows it\n", {1, 2}},
        {"the richest HTML", kHtml + kHtml, "\npart 2 is text in HTML only: --html-as-text shows it\n", {1, 2}},
        {"HTML deeper", kPlain + nested, "\nplain\n", {3}},
        {"none of them", kEnriched, "", {1}},
        {"an enclosed message is no form of the text",
         part("Content-Type: message/rfc822", "\nx") + kPlain,
         "\nplain\n",
         {2}},
    };
    for (const auto& row : rows) {
        std::istringstream all(shown(multipart("alternative", row.parts)));
        std::string text, line;
        std::vector<int> listed;
        while (std::getline(all, line) && !line.starts_with("part  size")) text += line + "\n";
        while (std::getline(all, line)) listed.push_back(std::stoi(line));
        EXPECT_THAT(text, HasSubstr(row.text)) << row.what;
        EXPECT_EQ(listed, row.listed) << row.what;
    }
}

TEST_F(ShowTest, CutsAFieldThatNobodyReads) {
    EXPECT_THAT(shown("To: " + std::string(70000, 'x') + "\n y\nSubject: z\n\n"),
                AllOf(HasSubstr("xx...\n"), EndsWith("Subject  z\n"), testing::SizeIs(testing::Lt(66000u))));
}

TEST_F(ShowTest, SaysWhatItCannotConvertOrReach) {
    const Ended unknown =
        run({"show", "-"}, crlf("MIME-Version: 1.0\nContent-Type: text/plain; charset=x-klingon\n\n") + "a\xe9");
    EXPECT_THAT(unknown.out, EndsWith("\na\\xe9\n"));
    EXPECT_EQ(unknown.err, "vel: -: part 0: charset \"x-klingon\" is not known; its text is shown as it stands\n");
    EXPECT_THAT(
        shown("MIME-Version: 1.0\nContent-Type: multipart/mixed; boundary=b\n\n" + kPlain + "--b\nX: y\n\ncut off"),
        EndsWith("uncovered  -\n"));
}

TEST_F(ShowTest, HasAProgramMakeTextOfHtml) {
    const Ended done =
        show_by("cat; echo; echo \"$HOME\" | grep -c /tmp/.vel-; ls /proc/self/fd | wc -w; env | grep -c OSTRA; true");
    EXPECT_EQ(done.exit, 0);
    EXPECT_THAT(done.out, HasSubstr("\n<meta charset=\"utf-8\">caf\xc3\xa9 \\x1b[2J\n1\n4\n0\n"))
        << "in UTF-8, harmless";
    EXPECT_THAT(show_by("cat", "\n\n<META content='text/html; Charset=koi8-r'>\xd4").out, EndsWith(">\xd1\x82\n"));
    EXPECT_THAT(show_by("cat", "; charset=x-klingon\n\n\xe9").err, HasSubstr("charset \"x-klingon\" is not known"));
    const Ended failed = show_by("echo half; exit 3");
    EXPECT_EQ(failed.exit, kIoError);
    EXPECT_EQ(failed.err, "vel: m.eml: part 0: w3m fails\n");
    EXPECT_THAT(failed.out, EndsWith("\npart  size  type       name\n   0     9  text/html  -\n"));
    EXPECT_EQ(shell("vel=$(command -v vel); cp bin/w3m .; PATH=. $vel show --html-as-text m.eml > o 2> e"), kIoError);
    EXPECT_EQ(content((directory() / "e").string()), "vel: m.eml: part 0: neither w3m nor lynx is installed\n")
        << "none is taken from where a sender may have put it";
}

TEST_F(ShowTest, KillsAProgramThatGoesOn) {
    file("in", "");
    command::Scratch scratch(temporary().string());
    const auto reason = [&](const std::string& script, const command::FilterLimits& limits) -> std::string {
        try {
            command::filtered((directory() / "in").string(), "/bin/bash", {"-c", script}, scratch, limits);
        } catch (const command::Failure& failure) {
            return failure.what();
        }
        return "";
    };
    using std::chrono::milliseconds;
    EXPECT_EQ(reason("sleep 100", {milliseconds(100), 100}), "bash does not end in time");
    EXPECT_EQ(reason("exec >&-; sleep 100", {milliseconds(100), 100}), "bash does not end in time");
    EXPECT_EQ(reason("yes", {milliseconds(20000), 100}), "bash writes too much");
    EXPECT_EQ(reason("kill -9 $$", {milliseconds(20000), 100}), "bash fails");
    const std::string pid = (directory() / "pid").string();
    EXPECT_EQ(reason("sleep 100 & echo $! > " + pid + "; wait", {milliseconds(1000), 100}),
              "bash does not end in time");
    await_end_of_process_in_file();
}

TEST_F(ShowTest, EndsTheProgramWithItself) {
    show_by("");
    std::ofstream(directory() / "bin/w3m")
        << "#!/bin/bash\necho $$ > " << directory().string() << "/pid\nexec sleep 100\n";
    shell(
        "vel show --html-as-text m.eml > o & vel=$!; while [[ ! -s pid ]]; do sleep 0.01; done; kill $vel; wait $vel");
    await_end_of_process_in_file();
}

}  // namespace
}  // namespace vel::test
