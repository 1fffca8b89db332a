// vel split, and the cutter behind it.
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>
#include <utility>

#include "tests/tools/run_vel.h"
#include "tools/message/mailbox_cutter.h"

namespace vel::command {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;

const std::string kFirst = "From a@b Mon Feb  1 10:20:30 1999\n";
const std::string kSecond = "From c Mon Feb  1 10:20:30 1999\r\n";

// Writes "[separator|content]" for each piece.
class Pieces : public MailboxCutter::Sink {
  public:
    void begin(std::string_view separator, uint64_t) override { text.append("[").append(separator).append("|"); }
    void content(std::string_view bytes) override { text += bytes; }
    void end() override { text += "]"; }
    std::string text;
};

std::string pieces_of(const std::string& mailbox, const MailboxCutter::Options& options, std::size_t block) {
    Pieces pieces;
    MailboxCutter cutter(options, pieces);
    for (std::size_t i = 0; i < mailbox.size(); i += block) cutter.feed(std::string_view(mailbox).substr(i, block));
    cutter.finish();
    return pieces.text;
}

struct Cut {
    std::string mailbox, pieces;
    MailboxCutter::Options options{};
};

TEST(MailboxCutterTest, CutsAtSeparatorLines) {
    const std::string long_line(5000, 'x'), blanks(1100, ' '), begin = "[" + kFirst + "|";
    const std::vector<Cut> rows{
        {"", ""},
        {"\n \r\n", ""},
        {kFirst + "S: x\n\nbody\n\n" + kSecond + "S: y\r\n\r\nb\r\n\r\n",
         begin + "S: x\n\nbody\n][" + kSecond + "|S: y\r\n\r\nb\r\n]"},
        {kFirst + "S: x\n\n" + kSecond + "\n", begin + "S: x\n\n][" + kSecond + "|\n]"},
        {kFirst + "\n\n\n" + kSecond, begin + "\n\n][" + kSecond + "|]"},
        {kFirst + "S: x\n" + kSecond + "y", begin + "S: x\n][" + kSecond + "|y]"},
        {"\npre\n\n" + kFirst + "x\n", "[|pre\n\n]" + begin + "x\n]"},
        {blanks + "x\n", "[|" + blanks + "x\n]"},
        {blanks.substr(77) + "\n", "[|" + blanks.substr(77) + "\n]"},
        {"From me\nFrom a: b: 19x9\n From a: b: 1999\n", "[|From me\nFrom a: b: 19x9\n From a: b: 1999\n]"},
        {kFirst + long_line + kSecond + "\n" + long_line, begin + long_line + kSecond + "\n" + long_line + "]"},
        {kFirst + "From " + long_line + ":: 1999\n", begin + "From " + long_line + ":: 1999\n]"},
        {kFirst + "\n>From x\n>>From\n", begin + "\n>From x\n>>From\n]"},
        {kFirst + "\n>From x\n>>From y\n>Fromm\n> From\n",
         begin + "\nFrom x\n>From y\n>Fromm\n> From\n]",
         {.unquote = true}},
        {"\n" + kFirst + "S: x\n\nbody\n\n" + kSecond + "\n\n\n",
         begin + kFirst + "S: x\n\nbody\n\n][" + kSecond + "|" + kSecond + "\n\n\n]",
         {.keep_separator = true}},
    };
    for (const Cut& row : rows) {
        for (const std::size_t block : {std::size_t{1}, std::size_t{7}, std::size_t{65536}}) {
            EXPECT_EQ(pieces_of(row.mailbox, row.options, block), row.pieces) << "blocks of " << block;
        }
    }
}

class SplitTest : public test::CommandTest {};

TEST_F(SplitTest, WritesEveryMessageOnce) {
    const std::string sample = std::string(VEL_SAMPLES) + "/archive.mbox";
    const test::Ended ended = run({"split", sample, "-o", target(), "--json", "--keep-separator"});
    EXPECT_EQ(ended.exit, 0) << ended.err;
    std::string joined;
    for (const auto& [name, text] : extracted()) joined += text;
    EXPECT_EQ(joined, content(sample));
    std::istringstream lines(ended.out);
    std::string line;
    for (int i = 0; i < 2; ++i) std::getline(lines, line);
    const Json second = Json::parse(line);
    EXPECT_EQ(second["file"], sample);
    EXPECT_EQ(second["path"], target() + "/message-00002.eml");
    EXPECT_EQ(second["offset"], joined.find("From tomas"));
    EXPECT_EQ(second["sender"], "tomas@example.net");
    EXPECT_EQ(second["date"]["normalized"], "Fri, 3 Oct 2025 10:02:44 -0800");
}

TEST_F(SplitTest, NeverOverwritesAndTellsWhatIsOdd) {
    std::filesystem::create_directory(target());
    file("out/message-00001.eml", "mine");
    const test::Ended ended = run({"split", "-", "-o", target()}, "pre\n" + kFirst + "a\n" + kFirst + "b\n");
    EXPECT_EQ(ended.exit, 65);
    EXPECT_EQ(ended.err, "vel: -: text stands before the first separator line\n");
    EXPECT_EQ(extracted(), (test::Files{{"message-00000.eml", "pre\n"},
                                        {"message-00001.eml", "mine"},
                                        {"message-00001-2.eml", "a\n"},
                                        {"message-00002.eml", "b\n"}}));
    EXPECT_THAT(ended.out, HasSubstr("         2  " + target() +
                                     "/message-00002.eml  a@b  Mon Feb  1 10:20:30 1999\n-: 2 messages\n"));
    EXPECT_EQ(run({"split", "-", "-o", target()}, "").exit, 0);
    EXPECT_EQ(run({"split", "-", "-o", target() + "/new"}, "Subject: x\n\nFrom me\n").exit, 65);
    EXPECT_TRUE(std::filesystem::is_empty(target() + "/new")) << "nothing is written without a separator line";
    EXPECT_EQ(run({"split", directory().string(), "-o", target()}).exit, 66);
    EXPECT_EQ(run({"split", "-", "-o", file("in-the-way", "")}).exit, 73);
}

TEST_F(SplitTest, NumbersTheMessagesOfSeveralMailboxesOn) {
    const std::string one = file("one", kFirst + "a\n"), two = file("two", kFirst + "b\n" + kFirst + "c\n");
    const test::Ended ended = run({"split", one, "none", two, "--json", "-o", target()});
    EXPECT_EQ(ended.exit, 66);
    EXPECT_THAT(ended.out, HasSubstr("\n{\"file\":\"none\",\"error\":\"No such file or directory\"}\n{\"file\":\"" +
                                     two + "\",\"number\":2,"));
    EXPECT_EQ(extracted(),
              (test::Files{{"message-00001.eml", "a\n"}, {"message-00002.eml", "b\n"}, {"message-00003.eml", "c\n"}}));
}

// A mailbox that comes through a pipe, a piece at a time.
class SplitPipeTest : public SplitTest {
  protected:
    SplitPipeTest() {
        EXPECT_EQ(::pipe2(pipe_, O_CLOEXEC), 0);
        out_ = ::open(file("stdout", "").c_str(), O_WRONLY | O_CLOEXEC);
    }
    ~SplitPipeTest() override {
        for (const int fd : {pipe_[0], pipe_[1], out_}) ::close(fd);
    }

    pid_t split(int out, int error = -1) const { return start({"split", "-", "-o", target()}, pipe_[0], out, error); }
    void give(const std::string& text) const {
        EXPECT_EQ(::write(pipe_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void end_mailbox() { ::close(std::exchange(pipe_[1], -1)); }
    std::string listed() const { return content((directory() / "stdout").string()); }

    int pipe_[2];
    int out_;
};

TEST_F(SplitPipeTest, ListsWhatStandsThereWhenInterrupted) {
    const pid_t process = split(out_);
    give(kFirst + "a\n" + kFirst + "b\n" + kFirst);
    await("message 2 in the list", [&] { return listed().find("message-00002.eml") != std::string::npos; });
    ::kill(process, SIGINT);
    EXPECT_EQ(wait_for(process), -SIGINT);
    EXPECT_EQ(extracted(), (test::Files{{"message-00001.eml", "a\n"}, {"message-00002.eml", "b\n"}}));
}

TEST_F(SplitPipeTest, GoesOnWithoutReaderAndWithIgnoredSignals) {
    int broken[2];
    ASSERT_EQ(::pipe2(broken, O_CLOEXEC), 0);
    ::close(broken[0]);
    const auto before = std::signal(SIGHUP, SIG_IGN);
    const pid_t process = split(broken[1]);
    std::signal(SIGHUP, before);
    give(kFirst + "a\n" + kFirst);
    await("message 1", [&] { return std::filesystem::exists(target() + "/message-00001.eml"); });
    ::kill(process, SIGHUP);
    end_mailbox();
    EXPECT_EQ(wait_for(process), 0);
    EXPECT_EQ(extracted().size(), 2u);
    ::close(broken[1]);
}

TEST_F(SplitPipeTest, DrawsOneStatusLineThatDataForAFileLeavesAlone) {
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_TRUE(terminal != -1 && ::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
    const int error = ::open(::ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const pid_t process = split(out_, error);
    give(kFirst);
    std::this_thread::sleep_for(std::chrono::milliseconds(700));  // longer than it is patient
    give("a\n");
    std::string drawn(200, '\0');
    drawn.resize(static_cast<std::size_t>(::read(terminal, drawn.data(), drawn.size())));
    EXPECT_EQ(drawn, "\rvel: 0 MiB\x1b[K");
    give(kFirst + "b\n" + kFirst);
    await("message 2 in the list", [&] { return listed().find("message-00002.eml") != std::string::npos; });
    end_mailbox();
    EXPECT_EQ(wait_for(process), 0);
    std::string rest(200, '\0');
    rest.resize(static_cast<std::size_t>(::read(terminal, rest.data(), rest.size())));
    EXPECT_TRUE(rest.ends_with("\r\x1b[K") && rest.find("\r\x1b[K") == rest.size() - 4) << rest;
    ::close(terminal);
    ::close(error);
}

}  // namespace
}  // namespace vel::command
