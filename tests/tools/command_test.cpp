// The built command: what it prints, writes, leaves behind and answers.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "tests/tools/run_vel.h"
#include "tools/message/body_file.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/verb.h"

namespace vel::test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr int kUsage = 64, kBadData = 65, kNoInput = 66, kCannotCreate = 73;

std::string sample(const std::string& name) { return std::string(VEL_SAMPLES) + "/" + name; }

const std::string kMime = "Subject: test\nMIME-Version: 1.0\n";

std::string multipart(const std::vector<std::string>& parts) {
    std::string text = kMime + "Content-Type: multipart/mixed; boundary=b\n\n";
    for (const std::string& part : parts) text += "--b\n" + part + "\n";
    return crlf(text + "--b--\n");
}

std::string attachment(const std::string& disposition, const std::string& body) {
    return "Content-Disposition: attachment; " + disposition + "\n\n" + body;
}

TEST_F(CommandTest, PrintsAMessageAsOneLineOfJson) {
    const std::string message = multipart({
        "Content-Type: text/plain; charset=\"x\"\nContent-Disposition: inline\nContent-Description: caf\xe9\n\none",
        "Content-Type: message/rfc822\nContent-ID: <a@b>\n\nMIME-Version: 1.1\n\ntwo",
    });
    const Ended ended = run({"parse", "--json", file("m.eml", message)});
    EXPECT_EQ(ended.exit, 0);
    EXPECT_THAT(ended.err, IsEmpty());
    const std::string head = "{\"file\":\"" + (directory() / "m.eml").string() + "\",";
    EXPECT_EQ(
        ended.out,
        head + R"("mime":true,"normalized":false,"fallback":null,"removed":[],)"
               R"("messages":[{"level":6,"text":"Found multipart/mixed"},)"
               R"({"level":6,"text":"boundary=b"},{"level":6,"text":"Found text/plain"},)"
               R"({"level":6,"text":"charset=\"x\""},{"level":6,"text":"Found message/rfc822"}],)"
               R"("count":4,"leaves":2,"multiparts":2,"uncovered":[],"parts":[)"
               R"({"index":0,"parent":null,"depth":0,"kind":1,"mime_version":1.0,"type":"multipart","subtype":"mixed",)"
               R"("encoding":null,"disposition":null,"id":null,"description":null,"params":["boundary=b"],)"
               R"("disposition_params":[],"boundary":"--b","header_start":0,"body_start":79,"body_end":275,)"
               R"("children":[1,2]},)"
               R"({"index":1,"parent":0,"depth":1,"kind":2,"mime_version":null,"type":"text","subtype":"plain",)"
               R"("encoding":null,"disposition":"inline\r\n","id":null,"description":"caf\uf7e9",)"
               R"("params":["charset=\"x\""],"disposition_params":[],"boundary":null,"header_start":84,)"
               R"("body_start":181,"body_end":186,"children":[]},)"
               R"({"index":2,"parent":0,"depth":1,"kind":1,"mime_version":null,"type":"message","subtype":"rfc822",)"
               R"("encoding":null,"disposition":null,"id":"<a@b>","description":null,"params":[],)"
               R"("disposition_params":[],"boundary":"--b","header_start":191,"body_start":242,"body_end":268,)"
               R"("children":[3]},)"
               R"({"index":3,"parent":2,"depth":2,"kind":2,"mime_version":1.1,"type":null,"subtype":null,)"
               R"("encoding":null,"disposition":null,"id":null,"description":null,"params":[],)"
               R"("disposition_params":[],"boundary":null,"header_start":242,"body_start":263,"body_end":268,)"
               R"("children":[]}]})"
               "\n");
}

TEST_F(CommandTest, DrawsTheTree) {
    const Ended ended = run({"parse", sample("quarterly-report.eml"), "--no-nested"});
    EXPECT_EQ(ended.exit, 0);
    EXPECT_THAT(ended.err, IsEmpty());
    EXPECT_EQ(ended.out, sample("quarterly-report.eml") +
                             ": MIME, 7 entities, 5 leaves\n"
                             "part  type                       encoding          header       body  size  name\n"
                             "   0  multipart/mixed            -                      0   637-2761  2124  -\n"
                             "   1  |-- multipart/alternative  -                    653   715-1509   794  -\n"
                             "   2  |   |-- text/plain         quoted-printable     729   851-1096   245  -\n"
                             "   3  |   `-- text/html          quoted-printable    1110  1197-1493   296  -\n"
                             "   4  |-- image/png              base64              1527  1746-1934   188  regions.png\n"
                             "   5  |-- text/csv               base64              1950  2122-2272   150  regions "
                             "q3.csv\n"
                             "   6  `-- message/rfc822         -                   2288  2373-2743   370  -\n");
}

struct Reading {
    std::string name, message;
    int exit;
    bool mime, normalized;
    Json fallback;
    int count;
};

// The library refuses or misreads these; an operator gets at the content all the same.
TEST_F(CommandTest, ReadsWhatTheLibraryRefuses) {
    const std::string bad_id = "Content-ID: a@b\nContent-Type: text/html\n\n";
    const std::vector<Reading> rows{
        {"plain", crlf("Subject: x\n\nbody\n"), 0, false, false, {}, 1},
        {"empty", "", 0, false, false, {}, 1},
        {"bare LF", kMime + "\nbody\n", 0, true, true, {}, 1},
        {"CR LF header, bare LF in the body", crlf(kMime + "\n") + "body\n", 0, true, false, {}, 1},
        {"blank parameter", crlf(kMime + "Content-Type: text/plain; charset=; name=\"a;b\"\n\nbody"), kBadData, true,
         false, "lenient", 1},
        {"token with an equals sign", crlf(kMime + "Content-Type: text/plain; name=a=b\n\nbody"), kBadData, true, false,
         "lenient", 1},
        {"parameter without a value", multipart({"Content-Type: text/plain; x\n\none"}), kBadData, true, false,
         "repaired", 2},
        {"bad fields in two parts", multipart({bad_id + "one", "Content-Disposition: \n\ntwo", bad_id + "three"}),
         kBadData, true, false, "repaired", 4},
        {"bad field and bare LF", kMime + "Content-ID: a@b\n\nbody\n", kBadData, true, true, "repaired", 1},
        {"no boundary", crlf(kMime + "Content-Type: multipart/mixed\n\nbody"), kBadData, true, false, "repaired", 1},
        {"header cut off", crlf(kMime + "Content-Type: text/html; x"), kBadData, true, false, "repaired", 1},
        {"bad field behind an odd delimiter", multipart({"\none\n--b junk\nContent-ID: x\n\ntwo"}), kBadData, true,
         false, "repaired", 3},
        {"version that is not a number", crlf("MIME-Version: 1.0\nMIME-Version: x\n\nbody"), kBadData, true, false,
         "repaired", 1},
    };
    for (const Reading& row : rows) {
        const Ended ended = run({"parse", "--json", "-"}, row.message);
        EXPECT_EQ(ended.exit, row.exit) << row.name;
        ASSERT_TRUE(Json::accept(ended.out)) << row.name << ": " << ended.out << ended.err;
        const Json json = Json::parse(ended.out);
        EXPECT_EQ(json["file"], "-");
        EXPECT_EQ(json["mime"], row.mime) << row.name;
        EXPECT_EQ(json["normalized"], row.normalized) << row.name;
        EXPECT_EQ(json["fallback"], row.fallback) << row.name;
        EXPECT_EQ(json["count"], row.count) << row.name;
        EXPECT_EQ(json["parts"].size(), static_cast<std::size_t>(row.count)) << row.name;
        EXPECT_EQ(ended.err.empty(), row.exit == 0 && !row.normalized) << row.name << ": " << ended.err;
    }
}

TEST_F(CommandTest, SaysWhyAMessageWasRefused) {
    const Ended ended = run({"parse", sample("refused-field.eml")});
    const std::string start = "vel: " + sample("refused-field.eml") + ": ";
    EXPECT_EQ(ended.err, start + "\"content-id:\" field invalid.\n" +                   //
                             start + "ParseMimeMessage: not a valid MIME message.\n" +  //
                             start +
                             "refused; read from a copy without Content-ID (line 15); offsets are those of the copy\n");
    EXPECT_THAT(run({"parse", "-v", sample("quarterly-report.eml")}).err, HasSubstr("Found image/png\n"));
}

struct Misuse {
    std::vector<std::string> arguments;
    int exit;
    std::string said;
};

TEST_F(CommandTest, AnswersWithTheExitCodesOfSysexits) {
    const std::string good = sample("uuencoded-script.eml"), refused = sample("refused-field.eml"), missing = target();
    const std::string in_the_way = file("in-the-way", "");
    const std::vector<Misuse> rows{
        {{}, kUsage, "vel: no verb given"},
        {{"prase", good}, kUsage, "vel: no verb \"prase\""},
        {{"parse"}, kUsage, "vel: FILE is required"},
        {{"parse", good, "--jsno"}, kUsage, "vel: The following argument was not expected: --jsno"},
        {{"extract", good}, kUsage, "vel: -o DIR is required"},
        {{"extract", good, "--stdout"}, kUsage, "vel: --stdout requires --part"},
        {{"extract", good, good, "--stdout", "--part", "0"}, kUsage, "vel: --stdout takes one FILE"},
        {{"extract", good, "--stdout", "--part", "0", "-r"}, kUsage, "vel: --stdout takes one FILE"},
        {{"extract", good, "--part", "-1", "-o", target()}, kUsage, "vel: --part: must not be negative"},
        {{"help", "prase"}, kUsage, "vel: no verb \"prase\""},
        {{"extract", missing, "-o", target() + "/new"}, kNoInput, "vel: " + missing},
        {{"extract", good, "--part", "one", "-o", target()}, kUsage, "vel: Could not convert: --part = one"},
        {{"parse", missing}, kNoInput, "vel: " + missing + ": No such file or directory"},
        {{"parse", ""}, kNoInput, "vel: \"\": No such file or directory"},
        {{"parse", directory().string()}, kNoInput, "vel: " + directory().string() + ": is a directory; --recursive"},
        {{"parse", "bad\x1b[31m\n"}, kNoInput, "vel: bad\\x1b[31m\\n: No such file or directory"},
        {{"extract", good, "-o", in_the_way}, kCannotCreate, "vel: " + in_the_way},
        {{"extract", good, "--part", "9", "-o", target()}, kBadData, "vel: " + good + ": has no part 9"},
        {{"parse", good, missing, refused}, kNoInput, "vel: " + missing},
    };
    for (const Misuse& row : rows) {
        const Ended ended = run(row.arguments);
        EXPECT_EQ(ended.exit, row.exit) << row.said;
        EXPECT_THAT(ended.err, StartsWith(row.said));
    }
    EXPECT_THAT(run({"--help"}).out, HasSubstr("extract"));
    EXPECT_THAT(run({"extract", "--help"}).out, HasSubstr("--whole-text"));
    EXPECT_EQ(run({"help", "extract"}).out, run({"extract", "--help"}).out);
    const int unreadable = ::open("/dev/null", O_WRONLY | O_CLOEXEC), out = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(wait_for(start({"parse", "-"}, unreadable, out)), kNoInput);
    for (const int fd : {unreadable, out}) ::close(fd);
    EXPECT_EQ(run({"--version"}).out, "vel 5.1.0\n");
    const Ended several = run({"parse", "--json", good, missing, good});
    EXPECT_EQ(std::count(several.out.begin(), several.out.end(), '\n'), 3) << "also one of the file that is missing";
}

TEST_F(CommandTest, TakesAnyFileName) {
    for (const std::string name : {"extract", "-dash", "caf\xe9", "100%", "a b"}) {
        const std::string path = file(name, "");
        const Ended ended = run({"parse", "--json", "--", path});
        EXPECT_EQ(ended.exit, 0) << path << ended.err;
    }
    for (const std::string name : {"[a,b]", "[]", "\x01x", "\x01\x01[x]", "x[\x01"}) {
        EXPECT_EQ(run({"parse", name}).err, "vel: " + command::visible(name) + ": No such file or directory\n");
    }
    ASSERT_EQ(::mkfifo((directory() / "pipe").c_str(), 0600), 0);
    std::thread writer([&] { std::ofstream(directory() / "pipe") << "Subject: x\r\n\r\nthrough a pipe"; });
    const Ended ended = run({"extract", "--part", "0", "--stdout", (directory() / "pipe").string()});
    writer.join();
    EXPECT_EQ(ended.out, "through a pipe");
}

TEST_F(CommandTest, WritesEveryBodyDecoded) {
    const Ended ended = run({"extract", sample("quarterly-report.eml"), sample("bare-line-feeds.eml"), "-o", target()});
    EXPECT_EQ(ended.exit, 0);
    const Files files = extracted();
    std::vector<std::string> names;
    for (const auto& [name, text] : files) names.push_back(name);
    EXPECT_THAT(names, testing::ElementsAre("Sicherung M\xc3\xbcnchen.log", "part-1.txt", "part-2.txt", "part-3.html",
                                            "part-7.txt", "regions q3.csv", "regions.png"));
    EXPECT_THAT(files.at("part-2.txt"), HasSubstr("Caf\xe9 sales in the south made up for the d\xe9lai"));
    EXPECT_THAT(files.at("regions.png"), StartsWith("\x89PNG\r\n\x1a\n"));
    EXPECT_THAT(files.at("regions q3.csv"), testing::EndsWith("East;846;60318.20\r\n"));
    EXPECT_EQ(files.at("Sicherung M\xc3\xbcnchen.log"), "07:01 Band 1 eingelegt\n07:30 fertig: M\xc3\xbcnchen\n");
    EXPECT_THAT(ended.out, HasSubstr("   4   134  image/png   " + target() + "/regions.png"));
}

// One text with two embedded files, quoted-printable, so that what is left must be decoded still.
const std::string kEmbedded = multipart(
    {"Content-Type: text/plain\nContent-Transfer-Encoding: quoted-printable\n\n"
     "before =3D\nbegin 644 one.txt\n#86)C\n`\nend\nbetween\nbegin 600 ../two.txt\n#86)C\n`\nend\nafter=20\nend"});

struct Extract {
    std::string name, message;
    std::vector<std::string> options;
    int exit;
    Files files;
};

TEST_F(CommandTest, ExtractsUnderSafeNames) {
    const std::string uu_one = "begin 644 one.txt\n#86)C\n`\nend\n", uu_two = "begin 600 ../two.txt\n#86)C\n`\nend\n";
    const std::vector<Extract> rows{
        {"hostile names",
         multipart({attachment("filename=\"../../etc/passwd\"", "1"),
                    attachment("filename=\"C:\\\\x\\\\con.txt\"", "2"),
                    attachment("filename=\"" + std::string(400, 'n') + ".doc\"", "3"),
                    attachment("filename=\"..\"", "4"), attachment("filename=\"a\x1b[1mb\"", "5")}),
         {},
         0,
         {{"passwd", "1\r\n"},
          {"_con.txt", "2\r\n"},
          {std::string(196, 'n') + ".doc", "3\r\n"},
          {"part-4.txt", "4\r\n"},
          {"a_[1mb", "5\r\n"}}},
        {"equal names",
         multipart({attachment("filename=a.b", "1"), attachment("filename=a.b", "2"),
                    "Content-Type: x/y; "
                    "name=a.b\n\n3"}),
         {},
         0,
         {{"a.b", "1\r\n"}, {"a-2.b", "2\r\n"}, {"a-3.b", "3\r\n"}}},
        {"embedded files",
         kEmbedded,
         {},
         0,
         {{"part-1.txt", "before =\r\nbetween\r\nafter \r\nend"}, {"one.txt", "abc"}, {"two.txt", "abc"}}},
        {"embedded files left in",
         kEmbedded,
         {"--whole-text"},
         0,
         {{"part-1.txt", crlf("before =\n" + uu_one + "between\n" + uu_two + "after \nend")},
          {"one.txt", "abc"},
          {"two.txt", "abc"}}},
        {"flat", crlf("Subject: x\n\ntext\n" + uu_one), {}, 0, {{"part-0.txt", "text\r\n"}, {"one.txt", "abc"}}},
        {"raw part",
         multipart({attachment("filename=a.txt\nContent-Transfer-Encoding: base64", "YWJj")}),
         {"--raw"},
         0,
         {{"a.txt.eml", crlf(attachment("filename=a.txt\nContent-Transfer-Encoding: base64", "YWJj\n"))}}},
        {"a container",
         multipart({"Content-Type: message/rfc822\n\nSubject: x\n\nbody"}),
         {"--part", "1"},
         0,
         {{"part-1.eml", crlf("Subject: x\n\nbody\n")}}},
        {"enclosed message left whole",
         multipart({"Content-Type: message/rfc822\n\nSubject: x\n\nbody"}),
         {"--no-nested"},
         0,
         {{"part-1.eml", crlf("Subject: x\n\nbody\n")}}},
        {"empty bodies",
         multipart({"", "Content-Type: image/gif\n", attachment("filename=e", "")}),
         {},
         0,
         {{"part-1.txt", ""}, {"part-2.gif", ""}, {"e", "\r\n"}}},
        {"what does not decode",
         multipart({"Content-Transfer-Encoding: base64\n\n*not base64*"}),
         {},
         0,
         {{"part-1.txt", "*not base64*\r\n"}}},
        {"a part whose lines end in bare LF has no blank line",
         crlf(kMime + "Content-Type: multipart/mixed; boundary=b\n\n--b\n") +
             "X: y\n\ntext\n--b\r\n\r\nok\r\n--b--\r\n",
         {},
         0,
         {{"part-1.txt.eml", "X: y\n\ntext\n"}, {"part-2.txt", "ok\r\n"}}},
        {"uncovered",
         crlf(kMime + "Content-Type: multipart/mixed; boundary=b\n\n--b\n\none\n--b\nX: y\n\ntwo"),
         {},
         0,
         {{"part-1.txt", "one\r\n"}, {"uncovered-1.eml", "X: y\r\n\r\ntwo"}}},
        {"only a part that is cut off",
         crlf(kMime + "Content-Type: multipart/mixed; boundary=b\n\n--b\n\none"),
         {},
         0,
         {{"uncovered-1.eml", "\r\none"}}},
        {"refused", multipart({"Content-ID: x\n\none"}), {}, kBadData, {{"part-1.txt", "one\r\n"}}},
        {"at most two files",
         multipart({"\n1", "\n2", "\n3"}),
         {"--max-files", "2"},
         kCannotCreate,
         {{"part-1.txt", "1\r\n"}, {"part-2.txt", "2\r\n"}}},
        {"at most three bytes",
         multipart({"\n12", "\n34", "\n5"}),
         {"--max-bytes", "7b"},
         kCannotCreate,
         {{"part-1.txt", "12\r\n"}, {"part-3.txt", "5\r\n"}}},
    };
    for (const Extract& row : rows) {
        std::vector<std::string> arguments{"extract", "-", "-o", target()};
        arguments.insert(arguments.end(), row.options.begin(), row.options.end());
        const Ended ended = run(arguments, row.message);
        EXPECT_EQ(ended.exit, row.exit) << row.name << ": " << ended.err;
        EXPECT_EQ(extracted(), row.files) << row.name;
        std::filesystem::remove_all(target());
    }
}

TEST_F(CommandTest, ExtractTellsInJsonWhatItWrote) {
    const Ended ended = run({"extract", "--json", "-o", target(), "-"}, kEmbedded);
    const Json json = Json::parse(ended.out);
    ASSERT_EQ(json["files"].size(), 3u);
    EXPECT_EQ(json["files"][2], (Json{{"part", 3},
                                      {"path", target() + "/two.txt"},
                                      {"size", 3},
                                      {"type", "x-embedded"},
                                      {"name", "../two.txt"},
                                      {"true_name", "../two.txt"},
                                      {"decoded", true}}));
    EXPECT_EQ(json["left_out"], 0);
    const Ended bad =
        run({"extract", "--json", "-o", target(), "-"}, crlf(kMime + "Content-Transfer-Encoding: base64\n\n*"));
    EXPECT_EQ(Json::parse(bad.out)["files"][0]["decoded"], false);
    EXPECT_EQ(bad.err, "vel: -: part 0 does not decode; written as it stands\n");
}

TEST_F(CommandTest, ExtractSaysWhatDoesNotDecode) {
    struct {
        const char* encoding;
        const char* body;
        bool decodes;
    } const rows[] = {{"quoted-printable", "=41=4", false},
                      {"quoted-printable", "plain", true},
                      {"quoted-printable", "=41", true},
                      {"base64", "QUJD", true},
                      {"base64", "QU*D", false},
                      {"x-uue", "begin 1 f\r\n`\r\n", false},
                      {"7bit", "*", true}};
    for (const auto& row : rows) {
        const std::string head = crlf(kMime + "Content-Transfer-Encoding: " + row.encoding + "\n\n");
        const Ended ended = run({"extract", "--json", "-o", target(), "-"}, head + row.body);
        EXPECT_EQ(Json::parse(ended.out)["files"][0]["decoded"], row.decodes) << row.encoding << ": " << row.body;
    }
}

// Its file is called "a".
const std::string kBinhex =
    "(This file must be converted with BinHex 4.0)\n:!@%!9%9B9(4dH(3!N!8&!*!%T\nkKSC@aXEm0L!!$r:\n";

TEST_F(CommandTest, MakesAppleSingleFilesOfBinhex) {
    const std::string type = "Content-Type: application/mac-binhex40",
                      damaged = std::string(kBinhex).replace(60, 1, "~");
    const std::string message = multipart({type + "; name=report.HQX\n\n" + kBinhex, type + "\n\n" + kBinhex,
                                           type + "\nContent-Transfer-Encoding: quoted-printable\n\n" + kBinhex,
                                           type + "\n\n" + damaged, "\ntext\n" + kBinhex});
    EXPECT_EQ(run({"extract", "-o", target(), "-"}, message).err,
              "vel: -: part 4 does not decode; written as it stands\n");
    const Files files = extracted();
    for (const char* name : {"report.as", "a.as", "a-2.as"}) {
        EXPECT_THAT(files.at(name), StartsWith(std::string("\0\x05\x16\0\0\x02\0\0", 8))) << name;
    }
    EXPECT_THAT(files.at("part-3.hqx"), StartsWith("(This file"));
    EXPECT_EQ(files.at("part-4.hqx"), crlf(damaged + "\n"));
    const Ended checked = run({"check", "-"}, message);
    EXPECT_THAT(checked.out, HasSubstr("part 4: the body does not decode as its encoding says"));
    EXPECT_EQ(std::count(checked.out.begin(), checked.out.end(), '\n'), 1) << checked.out;
}

TEST_F(CommandTest, WritesFilesAsTheUmaskHasItAndBodiesInPrivate) {
    const mode_t before = ::umask(027);
    run({"extract", "-o", target(), "-"}, "Subject: x\r\n\r\ny");
    ::umask(before);
    struct stat status {};
    ASSERT_EQ(::stat((target() + "/part-0.txt").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);

    command::Scratch scratch(temporary().string());
    std::string path = file("m.eml", "body");
    MimeMsg record{};
    record.fileName = path.data();
    record.bodyEnd = 4;
    const command::BodyFile body = command::write_body(record, command::Form::decoded, scratch);
    EXPECT_THAT(body.file.get(), StartsWith(scratch.directory()));
    EXPECT_EQ(content(body.file.get()), "body");
    std::filesystem::remove_all(scratch.directory());
    errno = 0;
    try {
        command::write_body(record, command::Form::decoded, scratch);
        ADD_FAILURE() << "wrote where nothing can be written";
    } catch (const command::Failure& failure) {
        EXPECT_EQ(failure.what(), scratch.directory() + ": No such file or directory");
    }
}

TEST_F(CommandTest, ReadsWhatIsRefusedAsGentlyAsItCan) {
    const std::string gentle = crlf(kMime + "Content-Type: text/plain; charset=; name=\"a;b\"\n\n");
    const Json json = Json::parse(run({"parse", "--json", "-"}, gentle).out);
    EXPECT_EQ(json["fallback"], "lenient");
    EXPECT_EQ(json["parts"][0]["params"][1], "name=\"a;b\"") << "the grammar that cuts quoted values comes last";
    EXPECT_EQ(run({"headers", "--part", "1", "-"}, multipart({"Content-ID: x\n\none"})).exit, kBadData);
    EXPECT_EQ(run({"headers", "-v", "-"}, "A: b\r\n\r\n").exit, kUsage) << "would do nothing without --part";
}

// Those of the help, with a command line that is not cut short by another program's.
TEST_F(CommandTest, RunsItsExamples) {
    std::filesystem::create_directories(directory() / "Maildir/cur");
    file("Maildir/cur/1", "Subject: x\r\n\r\ny");
    std::filesystem::copy_file(sample("archive.mbox"), directory() / "archive.mbox");
    int examples = 0;
    for (const command::Verb& verb : command::verbs()) {
        std::istringstream help(run({"help", std::string(verb.name)}).out);
        for (std::string line; std::getline(help, line);) {
            if (!line.starts_with("  printf ") && !line.starts_with("  vel ")) continue;
            const std::string example = line.substr(0, line.find(" | jq"));
            const int exit = shell("(" + example + ") >/dev/null 2>said");
            EXPECT_TRUE(exit == 0 || (verb.name == "check" && exit == kBadData)) << example;
            ++examples;
        }
    }
    EXPECT_GE(examples, static_cast<int>(command::verbs().size()));
}

TEST_F(CommandTest, LimitsAreNotNegative) {
    for (const char* limit : {"--max-files=-1", "--max-bytes=-1"}) {
        EXPECT_EQ(run({"extract", "-o", target(), "-", limit}, "Subject: x\r\n\r\ny").exit, 64) << limit;
    }
}

TEST_F(CommandTest, NeverOverwritesOrFollowsALink) {
    std::filesystem::create_directory(target());
    file("victim", "precious");
    file("out/part-0.txt", "mine");
    std::filesystem::create_symlink(directory() / "victim", target() + "/part-0-2.txt");
    std::filesystem::create_symlink(directory() / "nowhere", target() + "/part-0-3.txt");
    EXPECT_EQ(run({"extract", "-o", target(), "-"}, "Subject: x\r\n\r\nnew").exit, 0);
    EXPECT_EQ(content(target() + "/part-0.txt"), "mine");
    EXPECT_EQ(content(target() + "/part-0-4.txt"), "new");
    EXPECT_EQ(content((directory() / "victim").string()), "precious");
    EXPECT_FALSE(std::filesystem::exists(directory() / "nowhere"));
}

TEST_F(CommandTest, EndsCleanlyWhenASignalComes) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"parse", "-"}, std::vector<std::string>{"extract", "-", "-o", target()}}) {
        int pipe[2];
        ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
        const int out = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        const pid_t process = start(arguments, pipe[0], out);
        ASSERT_EQ(::write(pipe[1], "Subject: x\r\n", 12), 12);
        await("a private directory", [&] { return !std::filesystem::is_empty(temporary()); });
        const int signal = arguments[0] == "parse" ? SIGQUIT : SIGTERM;
        ::kill(process, signal);
        EXPECT_EQ(wait_for(process), -signal);
        EXPECT_TRUE(std::filesystem::is_empty(temporary()));
        EXPECT_FALSE(std::filesystem::exists(target()));
        for (const int fd : {pipe[0], pipe[1], out}) ::close(fd);
    }
}

TEST_F(CommandTest, FallsSilentWhenNobodyReads) {
    int pipe[2];
    ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
    ::close(pipe[0]);
    const int in = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(wait_for(start({"parse", sample("quarterly-report.eml")}, in, pipe[1])), -SIGPIPE);
    EXPECT_EQ(wait_for(start({"extract", sample("quarterly-report.eml"), "-o", target()}, in, pipe[1])), 0);
    EXPECT_THAT(extracted(), testing::SizeIs(5)) << "who reads the table does not decide what is written";
    EXPECT_THAT(content((directory() / "stderr").string()), IsEmpty());
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(wait_for(start({"parse", sample("quarterly-report.eml")}, in, full)), 74);
    for (const int fd : {pipe[1], in, full}) ::close(fd);
}

TEST_F(CommandTest, ManyPartsAndDeepNestingTakeTimeInProportion) {
    constexpr int kParts = 70000;  // more than a record lists as its children
    std::string many = crlf(kMime + "Content-Type: multipart/mixed; boundary=b\n\n");
    for (int i = 0; i < kParts; ++i) many += "--b\r\n\r\nx\r\n";
    const std::string drawn = run({"parse", file("many.eml", many + "--b--\r\n")}).out;
    EXPECT_THAT(drawn, HasSubstr("MIME, 70001 entities, 70000 leaves\n"));
    EXPECT_THAT(drawn, HasSubstr("\n69999  |-- text/plain "));
    EXPECT_THAT(drawn, HasSubstr("\n70000  `-- text/plain "));
    constexpr int kDepth = 10000;
    std::string deep = crlf(kMime);
    for (int i = 0; i < kDepth; ++i) {
        const std::string boundary = std::to_string(i) + "b";
        deep += "Content-Type: multipart/mixed; boundary=" + boundary + "\r\n\r\n--" + boundary + "\r\n";
    }
    const Ended ended = run({"parse", file("deep.eml", deep + "\r\nlost")});
    EXPECT_EQ(ended.exit, 0);
    EXPECT_THAT(ended.out, HasSubstr("(depth " + std::to_string(kDepth - 1) + ") multipart/mixed"));
    EXPECT_THAT(ended.out, HasSubstr("uncovered: "));
    EXPECT_LT(ended.out.size(), 300u * kDepth);
}

}  // namespace
}  // namespace vel::test
