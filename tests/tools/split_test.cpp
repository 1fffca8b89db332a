// vel split, and the cutter behind it.
#include <nlohmann/json.hpp>

#include "tests/tools/run_vel.h"
#include "tools/mailbox_cutter.h"

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
    std::string name, mailbox, pieces;
    MailboxCutter::Options options{};
};

TEST(MailboxCutterTest, CutsAtSeparatorLines) {
    const std::string longline(5000, 'x');
    const std::vector<Cut> rows{
        {"nothing", "", ""},
        {"blank lines only", "\n \r\n", ""},
        {"two messages", kFirst + "S: x\n\nbody\n\n" + kSecond + "S: y\r\n\r\nb\r\n\r\n",
         "[" + kFirst + "|S: x\n\nbody\n][" + kSecond + "|S: y\r\n\r\nb\r\n]"},
        {"the blank line of the header stays", kFirst + "S: x\n\n" + kSecond + "\n",
         "[" + kFirst + "|S: x\n\n][" + kSecond + "|\n]"},
        {"one of two blank lines stays", kFirst + "\n\n\n" + kSecond, "[" + kFirst + "|\n\n][" + kSecond + "|]"},
        {"no blank line before", kFirst + "S: x\n" + kSecond + "y", "[" + kFirst + "|S: x\n][" + kSecond + "|y]"},
        {"text before", "\npre\n\n" + kFirst + "x\n", "[|pre\n\n][" + kFirst + "|x\n]"},
        {"a long line that begins with blanks", std::string(1100, ' ') + "x\n", "[|" + std::string(1100, ' ') + "x\n]"},
        {"a long line of blanks", std::string(1023, ' ') + "\n", "[|" + std::string(1023, ' ') + "\n]"},
        {"no separators", "From me\nFrom a: b: 19x9\n From a: b: 1999\n",
         "[|From me\nFrom a: b: 19x9\n From a: b: 1999\n]"},
        {"inside a long line", kFirst + longline + kSecond + "\n" + longline,
         "[" + kFirst + "|" + longline + kSecond + "\n" + longline + "]"},
        {"a long line like a separator", kFirst + "From " + longline + ":: 1999\n",
         "[" + kFirst + "|From " + longline + ":: 1999\n]"},
        {"quotes stay", kFirst + "\n>From x\n>>From\n", "[" + kFirst + "|\n>From x\n>>From\n]"},
        {"quotes taken off",
         kFirst + "\n>From x\n>>From y\n>Fromm\n> From\n",
         "[" + kFirst + "|\nFrom x\n>From y\n>Fromm\n> From\n]",
         {.unquote = true}},
        {"all kept but blank lines at the very beginning",
         "\n" + kFirst + "S: x\n\nbody\n\n" + kSecond + "\n\n\n",
         "[" + kFirst + "|" + kFirst + "S: x\n\nbody\n\n][" + kSecond + "|" + kSecond + "\n\n\n]",
         {.keep_separator = true}},
    };
    for (const Cut& row : rows) {
        for (const std::size_t block : {std::size_t{1}, std::size_t{7}, std::size_t{65536}}) {
            EXPECT_EQ(pieces_of(row.mailbox, row.options, block), row.pieces) << row.name << ", blocks of " << block;
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
    const Json second = Json::parse(
        ended.out.substr(ended.out.find('\n') + 1, ended.out.find("\n{\"number\":3") - ended.out.find('\n')));
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

}  // namespace
}  // namespace vel::command
