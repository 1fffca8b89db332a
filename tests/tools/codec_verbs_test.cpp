// vel encode, decode, word and japanese: what they print, write, leave behind and answer.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/tools/run_vel.h"

namespace vel::test {
namespace {

using Texts = std::vector<std::string>;

class CodecVerbsTest : public CommandTest {
  protected:
    // An AppleSingle file with both forks, a name, type and creator.
    static std::string apple_single(const std::string& data, const std::string& resource) {
        const auto number = [](std::size_t value) {
            std::string bytes;
            for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
            return bytes;
        };
        const std::vector<std::pair<std::size_t, std::string>> entries{
            {1, data}, {2, resource}, {3, "A name"}, {9, "TEXTttxt" + std::string(24, '\0')}};
        std::string head = number(0x51600) + number(0x20000) + std::string(17, '\0') + '\x04', content;
        for (const auto& [id, bytes] : entries) {
            head += number(id) + number(26 + 12 * entries.size() + content.size()) + number(bytes.size());
            content += bytes;
        }
        return head + content;
    }
};

struct Row {
    Texts arguments;
    std::string in, out;
    int exit = 0;
    std::string said = {};  // behind "vel: "
};

TEST_F(CodecVerbsTest, PrintWhatComesOut) {
    const std::string cat = "begin 644 c.txt\n#0V%T\n`\nend\n";
    const std::string block = std::string(4096 - cat.size(), 'x') + "\n" + cat.substr(0, cat.size() - 1);
    const std::vector<Row> rows{
        {{"encode", "base64"}, "abcd", "YWJjZA==\r\n"},
        {{"encode", "qp"}, "\xe9=\r\nFrom", "=E9=3D\r\nFrom=\r\n\r\n"},  // the other encoder refuses such an end
        {{"encode", "qp-binary"}, "a b\n", "a=20b=0A=\r\n\r\n"},
        {{"encode", "uu"}, "Cat", "begin 644 unknown.dat \r\n#0V%T\r\n`\r\nend\r\n\r\n"},
        {{"encode", "uu", "--name", "a b", "--mode", "0755"}, "", "begin 0755 a b \r\n`\r\nend\r\n\r\n"},
        {{"encode", "uu", "--name", "a\nb"}, "", "", kUsage, "--name is one line, --mode an octal number\n"},
        {{"encode", "uu", "--mode", "rw"}, "", "", kUsage, "--name is one line, --mode an octal number\n"},
        {{"encode", "base64", "--name", "x"}, "", "", kUsage, "--name does not go with base64\n"},
        {{"encode", "rot13"}, "", "", kUsage, "CODEC: rot13 not in {base64,qp,qp-binary,uu,binhex}\n"},
        {{"encode", "binhex"}, std::string(60, '\0'), "", kBadData, "-: is no AppleSingle file\n"},
        {{"encode", "binhex"},
         apple_single("d", "r").substr(0, 80),
         "",
         kBadData,
         "-: is an AppleSingle file that is cut short\n"},
        {{"decode", "base64"}, "YW\nJj\r\nZA==junk", "abcd"},
        {{"decode", "base64"}, "YWJj*", "", kBadData, "-: holds a character that is none of base64\n"},
        {{"decode", "qp"},
         "=E9=\na \n=\r\nb\n",
         "\xe9"
         "a \r\nb"},
        {{"decode", "qp"}, "ab=4", "", kBadData, "-: ends inside an escape\n"},
        {{"decode", "uu", "--show-name"}, "prose\n" + cat + cat, "Cat", 0, "-: name: c.txt\n"},
        {{"decode", "uu"}, "prose", "", kBadData, "-: has no begin line\n"},
        {{"decode", "uu"}, "begin 644 \n#0V%T\n", "Cat", kBadData, "-: no end line stands behind the data\n"},
        {{"decode", "uu"}, block, "Cat"},
        {{"decode", "binhex"}, "prose", "", kBadData, "-: has no BinHex text, or one that is cut short or damaged\n"},
        {{"japanese", "to-jis"}, "a\x93\xfa\xff\n", "a\x1b$BF|\x1b(J\xff\n"},
        {{"japanese", "to-jis", "--mark", "<?>"}, "\xff\n", "<?>\n"},
        {{"japanese", "to-sjis"}, "\x1b$BF|\x1b(J $BF|(J\n", "\x93\xfa $BF|(J\n"},
        {{"japanese", "to-sjis", "--repair"}, "$BF|(J\n", "\x93\xfa\n"},
        {{"word", "encode", "--charset", "x", "--method", "b", "-"}, "\xfc\r\na\n", "=?x?B?/A==?=\na\n"},
        {{"word", "encode", "--charset", std::string(64, 'c'), "a"},
         "",
         "",
         64,
         "--charset: a name has at most 63 characters\n"},
        {{"word", "encode", "--method", "q", "\xfc"}, "", "=?US-ASCII?Q?=FC?=\n"},
        {{"word", "decode", "=?x?Q?=FC?=", ""}, "", "=?x?Q?=FC?=\n\n"},
        {{"word", "decode", "--charset", "x", "=?x?Q?=FC?= =?y?Q?=FC?="}, "", "\xfc =?y?Q?=FC?=\n"},
        {{"word", "decode", "--force", "--json", "=?x?B?/Ao=?="},
         "",
         "{\"text\":\"=?x?B?/Ao=?=\",\"result\":\"\\uf7fc\\n\"}\n"},
        {{"word", "charset", "a", "=?x?Q?b?= =?y?Q?b?="}, "", "x\n", kBadData, "no encoded word in \"a\"\n"},
        {{"word", "decode", "-"}, std::string("a\0b\n", 4), "", kBadData, "a NUL character in \"a\\x00b\"\n"},
    };
    set("Gateway", "LocalCharSet", "nothing that the command sees");
    for (const Row& row : rows) {
        const Ended ended = run(row.arguments, row.in);
        const std::string name = testing::PrintToString(row.arguments) + " of " + testing::PrintToString(row.in);
        EXPECT_EQ(ended.out, row.out) << name;
        EXPECT_EQ(ended.exit, row.exit) << name;
        EXPECT_EQ(ended.err.substr(0, ended.err.find('\n') + 1), row.said.empty() ? "" : "vel: " + row.said) << name;
    }
}

TEST_F(CodecVerbsTest, BringFilesBack) {
    Random random(4);
    std::string bytes;
    for (int i = 0; i < 300000; ++i) bytes += static_cast<char>(random.below(5) == 0 ? 0x90 : random.below(256));
    const std::string plain = file("plain", bytes), apple = file("apple", apple_single(bytes, bytes.substr(7)));
    for (const std::string codec : {"base64", "qp-binary", "uu", "binhex"}) {
        const std::string original = codec == "binhex" ? apple : plain;
        const std::string encoded = target() + "-encoded", decoded = target() + "-decoded";
        ASSERT_EQ(run({"encode", codec, original, "-o", encoded}).exit, 0) << codec;
        ASSERT_EQ(run({"decode", codec, encoded, "--output", decoded}).exit, 0) << codec;
        const std::string pipe =
            "vel encode " + codec + " <" + original + " | cat | vel decode " + codec + " | cat >piped";
        ASSERT_EQ(shell(pipe), 0) << codec;
        EXPECT_TRUE(content(decoded) == content(original)) << codec;
        EXPECT_TRUE(content((directory() / "piped").string()) == content(original)) << codec;
    }
    EXPECT_THAT(run({"encode", "uu", plain}).out, testing::StartsWith("begin 644 plain \r\n"));
    EXPECT_EQ(run({"decode", "binhex", "--show-name", target() + "-encoded", "-o", "/dev/null"}).err,
              "vel: " + target() + "-encoded: name: A name\n");
}

TEST_F(CodecVerbsTest, WriteAFileWholeOrNotAtAll) {
    const std::string path = file("result", "before");
    ::chmod(path.c_str(), 0640);
    std::filesystem::create_symlink(path, directory() / "link");
    EXPECT_EQ(run({"decode", "base64", "-o", path}, "YWJj*").exit, kBadData);
    EXPECT_EQ(content(path), "before");
    EXPECT_EQ(run({"decode", "base64", "-o", (directory() / "link").string()}, "YWJj").exit, 0);
    EXPECT_EQ(content(path), "abc");
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
    EXPECT_EQ(run({"encode", "base64", path, "-o", path}).exit, 0);
    EXPECT_EQ(content(path), "YWJj\r\n");
    EXPECT_EQ(run({"encode", "uu", "-o", "/dev/null"}, "x").exit, 0);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

struct Refusal {
    Texts arguments;
    int exit;
    std::string said;
};

TEST_F(CodecVerbsTest, SayWhatTheSystemRefuses) {
    const std::string here = directory().string(), plain = file("plain", "abc"), nowhere = here + "/no/file";
    const std::vector<Refusal> rows{
        {{"encode", "base64", nowhere}, kNoInput, nowhere + ": No such file or directory"},
        {{"encode", "base64", here}, kNoInput, here + ": Is a directory"},
        {{"decode", "uu", here}, kNoInput, here + ": is a directory"},
        {{"encode", "base64", plain, "-o", here}, kCannotCreate, here + ": is a directory"},
        {{"encode", "base64", plain, "-o", nowhere}, kCannotCreate, nowhere + ": No such file or directory"},
        {{"encode", "base64", plain, "-o", ""}, kUsage, "a file to write has a name"},
        {{"encode", "base64", plain, "-o", "/dev/full"}, kIoError, plain + ": /dev/full: No space left on device"},
        {{"encode", "uu", plain, "-o", "/dev/full"}, kIoError, plain + ": /dev/full: No space left on device"},
    };
    for (const Refusal& row : rows) {
        const Ended ended = run(row.arguments);
        EXPECT_EQ(ended.exit, row.exit) << row.said;
        EXPECT_EQ(ended.err, "vel: " + row.said + "\n");
    }
    const int none = ::open("/dev/null", O_WRONLY | O_CLOEXEC), full = ::open("/dev/full", O_RDWR | O_CLOEXEC);
    for (const std::string codec : {"base64", "uu"}) {
        EXPECT_EQ(wait_for(start({"encode", codec, plain}, none, full)), kIoError);
        EXPECT_EQ(content(here + "/stderr"), "vel: standard output: No space left on device\n");
        EXPECT_EQ(wait_for(start({"encode", codec}, none, full)), kNoInput) << "standard input cannot be read";
    }
    for (const int fd : {none, full}) ::close(fd);
    EXPECT_EQ(shell("vel encode base64 plain 2> e >&-"), kIoError);
    EXPECT_EQ(shell("vel encode base64 </dev/zero | head -c 9 >/dev/null; test ${PIPESTATUS[0]} -eq 141"), 0);
}

}  // namespace
}  // namespace vel::test
