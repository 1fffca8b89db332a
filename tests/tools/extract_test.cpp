// vel extract: what it writes, under which names, and what it tells of it.
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "tests/tools/run_vel.h"
#include "tools/io/exit_code.h"
#include "tools/message/body_file.h"

namespace vel::test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

class ExtractVerbTest : public CommandTest {};

TEST_F(ExtractVerbTest, WritesEveryBodyDecoded) {
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

TEST_F(ExtractVerbTest, ExtractsUnderSafeNames) {
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
         crlf(kMimeHead + "Content-Type: multipart/mixed; boundary=b\n\n--b\n") +
             "X: y\n\ntext\n--b\r\n\r\nok\r\n--b--\r\n",
         {},
         0,
         {{"part-1.txt.eml", "X: y\n\ntext\n"}, {"part-2.txt", "ok\r\n"}}},
        {"uncovered",
         crlf(kMimeHead + "Content-Type: multipart/mixed; boundary=b\n\n--b\n\none\n--b\nX: y\n\ntwo"),
         {},
         0,
         {{"part-1.txt", "one\r\n"}, {"uncovered-1.eml", "X: y\r\n\r\ntwo"}}},
        {"only a part that is cut off",
         crlf(kMimeHead + "Content-Type: multipart/mixed; boundary=b\n\n--b\n\none"),
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

TEST_F(ExtractVerbTest, TellsInJsonWhatItWrote) {
    const Ended ended = run({"extract", "--json", "-o", target(), "-"}, kEmbedded);
    const Json json = Json::parse(ended.out);
    ASSERT_EQ(json["files"].size(), 3u);
    EXPECT_EQ(json["files"][2], (Json{{"part", 3},
                                      {"path", target() + "/two.txt"},
                                      {"size", 3},
                                      {"type", "x-embedded"},
                                      {"name", {{"text", "../two.txt"}, {"converted", true}}},
                                      {"true_name", "../two.txt"},
                                      {"decoded", true}}));
    EXPECT_EQ(json["left_out"], 0);
}

TEST_F(ExtractVerbTest, SaysWhatDoesNotDecode) {
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
        const std::string head = crlf(kMimeHead + "Content-Transfer-Encoding: " + row.encoding + "\n\n");
        const Ended ended = run({"extract", "--json", "-o", target(), "-"}, head + row.body);
        EXPECT_EQ(Json::parse(ended.out)["files"][0]["decoded"], row.decodes) << row.encoding << ": " << row.body;
    }
}

// Its file is called "a".
const std::string kBinhex =
    "(This file must be converted with BinHex 4.0)\n:!@%!9%9B9(4dH(3!N!8&!*!%T\nkKSC@aXEm0L!!$r:\n";

TEST_F(ExtractVerbTest, MakesAppleSingleFilesOfBinhex) {
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

TEST_F(ExtractVerbTest, WritesFilesAsTheUmaskHasItAndBodiesInPrivate) {
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

TEST_F(ExtractVerbTest, NeverOverwritesOrFollowsALink) {
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

}  // namespace
}  // namespace vel::test
