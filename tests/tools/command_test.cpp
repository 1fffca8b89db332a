// What holds for the whole command: exit codes, help, file names, signals, readers that go away.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <sstream>
#include <thread>

#include "tests/tools/run_vel.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/verb.h"

namespace vel::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

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
        {{"extract", "-", "-o", target(), "--max-files=-1"}, kUsage, "vel: --max-files: must not be negative"},
        {{"extract", "-", "-o", target(), "--max-bytes=-1"}, kUsage, "vel: --max-bytes: must not be negative"},
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
    const int unreadable = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(wait_for(start({"parse", "-"}, unreadable)), kNoInput);
    ::close(unreadable);
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

// Those of the help, with a command line that is not cut short by another program's.
TEST_F(CommandTest, RunsItsExamples) {
    std::filesystem::create_directories(directory() / "Maildir/cur");
    file("Maildir/cur/1", "Subject: x\r\n\r\ny");
    std::filesystem::copy_file(sample("archive.mbox"), directory() / "archive.mbox");
    std::filesystem::create_directory(directory() / "queue");
    ASSERT_EQ(shell("vel init place --host h.d > said"), 0);  // for its table of types
    int examples = 0;
    for (const command::Verb& verb : command::verbs()) {
        if (verb.name == "queue" || verb.name == "send" || verb.name == "types") {
            file("ostra.ini", "[Gateway]\nQueueDirectory=" + (directory() / "queue").string() +
                                  "\n[Config]\nInstallDirectory=" + (directory() / "place/install").string() +
                                  "\n[Connection]\nGatewayHostName=h\nGatewayDomain=d\n");
        }
        std::istringstream help(run({"help", std::string(verb.name)}).out);
        for (std::string line; std::getline(help, line);) {
            if (!line.starts_with("  printf ") && !line.starts_with("  vel ")) continue;
            const std::string example = line.substr(0, std::min(line.find(" | jq"), line.find(" | diff")));
            const int exit = shell("(" + example + ") >/dev/null 2>said");
            EXPECT_TRUE(exit == 0 || (verb.name == "check" && exit == kBadData)) << example;
            ++examples;
        }
    }
    EXPECT_GE(examples, static_cast<int>(command::verbs().size()));
}

TEST_F(CommandTest, EndsCleanlyWhenASignalComes) {
    const std::vector<std::vector<std::string>> rows{{"parse", "-"},
                                                     {"extract", "-", "-o", target()},
                                                     {"encode", "base64", "-o", target()},
                                                     {"encode", "uu", "-o", target()}};
    for (const std::vector<std::string>& arguments : rows) {
        int pipe[2];
        ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
        const pid_t process = start(arguments, pipe[0]);
        ASSERT_EQ(::write(pipe[1], "Subject: x\r\n", 12), 12);
        await("a private directory",
              [&] { return !std::filesystem::is_empty(temporary()) || !left_behind(".vel-").empty(); });
        const int signal = arguments[0] == "parse" ? SIGQUIT : SIGTERM;
        ::kill(process, signal);
        EXPECT_EQ(wait_for(process), -signal);
        EXPECT_TRUE(std::filesystem::is_empty(temporary()) && left_behind(".vel-").empty());
        EXPECT_FALSE(std::filesystem::exists(target()));
        for (const int fd : pipe) ::close(fd);
    }
}

TEST_F(CommandTest, FallsSilentWhenNobodyReads) {
    int pipe[2];
    ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
    ::close(pipe[0]);
    EXPECT_EQ(wait_for(start({"parse", sample("quarterly-report.eml")}, -1, pipe[1])), -SIGPIPE);
    EXPECT_EQ(wait_for(start({"extract", sample("quarterly-report.eml"), "-o", target()}, -1, pipe[1])), 0);
    EXPECT_THAT(extracted(), testing::SizeIs(5)) << "who reads the table does not decide what is written";
    EXPECT_THAT(content((directory() / "stderr").string()), IsEmpty());
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(wait_for(start({"parse", sample("quarterly-report.eml")}, -1, full)), kIoError);
    for (const int fd : {pipe[1], full}) ::close(fd);
}

}  // namespace
}  // namespace vel::test
