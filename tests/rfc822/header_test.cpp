#include <pthread.h>

#include <cerrno>
#include <ctime>
#include <sstream>
#include <thread>
#include <utility>

#include "frame/owned.h"
#include "tests/rfc822/waits_for.h"
#include "tests/support/fixture.h"
#include "vel/frame.h"
#include "vel/rfc822.h"

namespace vel::test {
namespace {

struct Freed822 {
    void operator()(addr822* header) const { Free822Header(header); }
};
using Header = std::unique_ptr<addr822, Freed822>;

// "phrase<canon>" of each address.
std::string addresses(const addrlist822* list) {
    std::string text;
    for (const recipient* r = list->recips->first; r; r = r->next) {
        text += std::string(text.empty() ? "" : "|") + r->phrase + '<' + r->canon + '>';
    }
    return text + (list->text || list->next ? " and more" : "");
}

std::string describe(const date822& date) {
    std::string text = date.has_date ? "D" : "";
    if (date.has_resent_date) text += 'R';
    char output[64] = "none";
    if (date.time) UTC2rfc(date.time, output);
    return text + ' ' + output;
}

// The record as one line: "to=<a@b> subject=[x] other=[X: 1][Y: 2]"; what is absent is left out.
std::string describe(const addr822& h) {
    std::string text;
    const auto part = [&](const char* name, const std::string& value) {
        text += std::string(text.empty() ? "" : " ") + name + '=' + value;
    };
    const std::pair<const char*, const addrlist822*> lists[] = {{"to", h.to},
                                                                {"resent-to", h.resent_to},
                                                                {"cc", h.cc},
                                                                {"resent-cc", h.resent_cc},
                                                                {"bcc", h.bcc},
                                                                {"resent-bcc", h.resent_bcc},
                                                                {"from", h.from},
                                                                {"resent-from", h.resent_from},
                                                                {"reply-to", h.reply_to},
                                                                {"receipt-to", h.return_receipt_to}};
    for (const auto& [name, list] : lists) {
        if (list) part(name, addresses(list));
    }
    const std::pair<const char*, const char*> texts[] = {
        {"subject", h.subject},         {"sender", h.sender},
        {"id", h.message_id},           {"resent-id", h.resent_message_id},
        {"in-reply-to", h.in_reply_to}, {"references", h.references},
        {"return-path", h.return_path}, {"status", h.status},
        {"separator", h.separator},     {"version", h.mime_version},
        {"type", h.content_type},       {"encoding", h.content_transfer_encoding},
        {"content-id", h.content_id},   {"description", h.content_description}};
    for (const auto& [name, value] : texts) {
        if (value) part(name, '[' + std::string(value) + ']');
    }
    const std::pair<const char*, const ms*> chains[] = {{"received", h.received}, {"other", h.other}};
    for (const auto& [name, chain] : chains) {
        if (chain) part(name, "");
        for (const ms* node = chain; node; node = node->next) text += '[' + std::string(node->text) + ']';
    }
    if (h.date) part("date", '[' + describe(*h.date) + ']');
    return text;
}

class HeaderTest : public VelTest {
  protected:
    HeaderTest() { Init822Parser(); }
    ~HeaderTest() override { Terminate822Parser(); }

    struct Block {
        Header header{New822Header()};
        int result = -1;
        int lines = -1;
        int status = -1;
        std::string next;  // the line behind the block
    };

    Block parse(std::string_view text, const char* name = "block") const {
        Block block;
        const int handle = fileopen(file(name, text).c_str(), 1, 0);
        block.result = ParseHdr(handle, block.header.get(), &block.lines, &block.status);
        char* line = nullptr;
        if (VELGetLine(handle, &line) == 1) block.next = line;
        fileclose(handle);
        return block;
    }
};

class HeaderBlock : public HeaderTest {};

struct Case {
    const char* name;
    std::string_view text;
    const char* record;
    int lines;
    int status;
};

using namespace std::string_view_literals;

constexpr Case kCases[] = {
    {"folded_addresses", "From: Sales\r\n Desk\r\n\t<sd@x.y>\r\n\r\nbody\r\n"sv, "from=Sales Desk<sd@x.y>", 4, 0},
    {"lists_gather", "To: a@b, c@d\r\nCc:\r\nTO:e@f\r\n\r\n"sv, "to=<a@b>|<c@d>|<e@f> cc=", 4, 0},
    {"texts_keep_the_first", "Subject: a\r\nSubject: b\r\n\r\n"sv, "subject=[a]", 3, 0},
    {"an_empty_text_is_the_first_too", "Subject:\r\nSubject: b\r\n\r\n"sv, "subject=[]", 3, 0},
    {"folded_text_keeps_its_breaks", "Subject: a \r\n   b\r\n\r\n"sv, "subject=[a \r\n\tb]", 3, 0},
    {"folded_sender_is_unfolded", "Sender: a\r\n \tb \r\n c\r\n\r\n"sv, "sender=[a b  c]", 4, 0},
    {"value_on_the_next_line", "Subject:\r\n x\r\n\r\n"sv, "subject=[x]", 3, 0},
    {"white_space_behind_a_value_stays", "Subject:\t x \r\n\r\n"sv, "subject=[x ]", 2, 0},
    {"first_date_wins", "Date: 1 Feb 99 10:20 EST\r\nResent-Date: 2 Feb 99\r\n\r\n"sv,
     "date=[DR Mon, 1 Feb 1999 10:20 -0500]", 3, 0},
    {"resent_date_comes_first", "Resent-Date: 2\r\n Feb 99\r\nDate: 1 Feb 99\r\n\r\n"sv,
     "date=[DR Tue, 2 Feb 1999 00:00 +0000]", 4, 0},
    {"only_resent_date", "Resent-Date: 2 Feb 99\r\n\r\n"sv, "date=[R Tue, 2 Feb 1999 00:00 +0000]", 2, 0},
    {"kept_names_of_other_lines", "X-MAILER:  a\r\n\tB\r\nother: c\r\n: d\r\nX:\r\n\r\n"sv,
     "other=[X-mailer: a\r\n\tB][Other: c][: d][X: ]", 6, 0},
    {"received_lines", "Received: from a\r\n by b\r\nReceived: c\r\n\r\n"sv, "received=[from a\r\n\tby b][c]", 4, 0},
    {"kept_blank_before_the_colon", "Subject : a\r\nTo\t: a@b\r\n\r\n"sv, "", 3, 0},
    {"no_colon", "Hello\r\n>From x\r\nworld\r\n\r\n"sv, "", 4, 0},
    {"separator", "From a@b Mon Feb  1 10:20:30 1999\r\nfrom\r\n\r\n"sv, "separator=[a@b Mon Feb  1 10:20:30 1999]", 3,
     0},
    {"recvdate_is_an_other_line", "Recvdate: x\r\nrecvdate y\r\n\r\n"sv, "other=[Recvdate: x]", 3, 0},
    {"status_last", "A: 1\r\nB: 2\r\nC: 3\r\nStatus: RO\r\n\r\n"sv, "status=[RO] other=[A: 1][B: 2][C: 3]", 5, 4},
    {"status_before_others", "A: 1\r\nB: 2\r\nC: 3\r\nSTATUS: RO\r\nD: 4\r\nE: 5\r\n\r\n"sv,
     "status=[RO] other=[A: 1][B: 2][C: 3][D: 4][E: 5]", 7, 4},
    {"status_folded", "Status: R\r\n O\r\nD: 4\r\n\r\n"sv, "status=[R\r\n\tO] other=[D: 4]", 4, 2},
    {"kept_status_without_colon", "Status RO\r\n\r\n"sv, "status=[RO]", 2, 1},
    {"last_status_counts", "Status: a\r\nX: 1\r\nStatus\r\n\r\n"sv, "status=[a] other=[X: 1]", 4, 3},
    {"status_at_the_end_of_the_file", "X: 1\r\nStatus: RO\r\n"sv, "status=[RO] other=[X: 1]", 2, 0},
    {"longer_name_than_status", "Status-X: 1\r\nStatu: 2\r\n\r\n"sv, "other=[Status-x: 1][Statu: 2]", 3, 0},
    {"end_of_the_file", "Subject: a"sv, "subject=[a]", 1, 0},
    {"empty_file", ""sv, "", 0, 0},
    {"empty_block", "\r\nSubject: a\r\n"sv, "", 1, 0},
    {"bare_line_feeds", "Subject: a\nTo: a@b\n\nTo: c@d\n"sv, "to=<a@b> subject=[a]", 3, 0},
    {"bare_carriage_returns", "Subject: a\rTo: a@b\r\r\n\r\n"sv, "subject=[a\rTo: a@b\r]", 2, 0},
    {"begins_with_a_continuation", " x: y\r\n z\r\nTo: a@b\r\n\r\n"sv, "to=<a@b>", 4, 0},
    {"kept_white_space_does_not_end_the_block", "Subject: a\r\n \t \r\nTo: a@b\r\n\r\n"sv, "to=<a@b> subject=[a\r\n\t]",
     4, 0},
    {"kept_nul_ends_a_line", "Subject: a\0b\r\nTo: a@b\r\n\0\r\nTo: c@d\r\n"sv, "to=<a@b> subject=[a]", 3, 0},
    {"every_known_field",
     "To: a@b\r\nResent-To: b@b\r\nCc: c@b\r\nResent-Cc: d@b\r\nBcc: e@b\r\nResent-Bcc: f@b\r\nFrom: g@b\r\n"
     "Resent-From: h@b\r\nReply-To: i@b\r\nReturn-Receipt-To: j\r\n @b\r\nMessage-ID: 1\r\n"
     "Resent-Message-ID: 2\r\nIn-Reply-To: 3\r\nReferences: 4\r\nReturn-Path: 5\r\nMIME-Version: 6\r\n"
     "Content-Type: 7\r\nContent-Transfer-Encoding: 8\r\nContent-ID: 9\r\nContent-Description: 10\r\n\r\n"sv,
     "to=<a@b> resent-to=<b@b> cc=<c@b> resent-cc=<d@b> bcc=<e@b> resent-bcc=<f@b> from=<g@b> resent-from=<h@b> "
     "reply-to=<i@b> receipt-to=<j@b> id=[1] resent-id=[2] in-reply-to=[3] references=[4] return-path=[5] "
     "version=[6] type=[7] encoding=[8] content-id=[9] description=[10]",
     22, 0},
};

TEST_F(HeaderBlock, stores_fields_and_counts_lines) {
    for (const Case& c : kCases) {
        const Block block = parse(c.text);
        EXPECT_EQ(block.result, 1) << c.name;
        EXPECT_EQ(describe(*block.header), c.record) << c.name;
        EXPECT_EQ(block.lines, c.lines) << c.name;
        EXPECT_EQ(block.status, c.status) << c.name;
    }
    EXPECT_EQ(parse("To: a@b\r\n\r\nbody\r\n").next, "body\r\n");
}

TEST_F(HeaderBlock, a_field_that_is_no_date_gets_the_current_time) {
    const time_t before = ::time(nullptr);
    const Block block = parse("Date: yesterday\r\nResent-Date: 1 Feb 99\r\n\r\n");
    ASSERT_TRUE(block.header->date && block.header->date->time);
    const UTCtime& got = *block.header->date->time;
    tm local{};
    local.tm_year = got.year - 1900;
    local.tm_mon = got.month - 1;
    local.tm_mday = got.day;
    local.tm_hour = got.hour;
    local.tm_min = got.minute;
    local.tm_sec = got.second;
    local.tm_isdst = -1;
    EXPECT_LE(std::abs(std::difftime(::mktime(&local), before)), 3600.0 + 60);
    EXPECT_EQ(got.zone, -5 * 60);
    EXPECT_EQ(got.flags, 3);
}

// A piece is a line: one without white space at its start is a field, an empty one ends the block.
TEST_F(HeaderBlock, kept_pieces_of_long_lines_are_lines) {
    std::string full = "Subject: ";
    full.resize(1024, 'x');
    Block block = parse(full + "To: a@b\r\nCc: c@d\r\n\r\n");
    EXPECT_EQ(describe(*block.header), "to=<a@b> cc=<c@d> subject=[" + full.substr(9) + "]");
    EXPECT_EQ(block.lines, 4);
    block = parse(full + "\r\nCc: c@d\r\n\r\n");
    EXPECT_EQ(describe(*block.header), "subject=[" + full.substr(9) + "]");
    EXPECT_EQ(block.next, "Cc: c@d\r\n");
}

// 64 units of 1024 bytes may not be reached; the field, a line and 4 bytes must fit into 63.
TEST_F(HeaderBlock, a_field_folded_over_more_than_63_units_ends_the_block) {
    constexpr std::size_t kHeld = 63 * 1024 - 1;
    for (const std::size_t size : {kHeld, kHeld + 1}) {
        std::string text = "X:";
        std::size_t length = text.size();  // of the field as it is held
        for (std::size_t piece; length < size; length += 3 + piece) {
            piece = std::min<std::size_t>(size - length - 3, size - length > 400 ? 100 : size);
            text.append("\r\n ").append(piece, 'y');
        }
        const Block block = parse(text + "\r\nTo: a@b\r\n\r\n");
        EXPECT_EQ(block.result, 1);
        ASSERT_TRUE(block.header->other);
        const std::size_t stored = std::strlen(block.header->other->text) - 3 + 5;
        if (size == kHeld) {
            EXPECT_EQ(stored, size);
            EXPECT_TRUE(block.header->to);
            EXPECT_TRUE(take_log().empty());
        } else {
            EXPECT_LT(stored, size);
            EXPECT_FALSE(block.header->to);
            EXPECT_EQ(block.next, "To: a@b\r\n");
            EXPECT_THAT(take_log(), testing::ElementsAre(LogLine{1, "ParseHdr", "too many headers to parse."}));
        }
    }
}

// The count grows by one unit a line, however long the line: 62 long lines are the most.
TEST_F(HeaderBlock, kept_the_count_grows_by_one_a_line) {
    for (const int lines : {62, 63}) {
        std::string text = "X:";
        for (int i = 0; i < lines; ++i) text.append("\r\n ").append(1021, 'y');
        const Block block = parse(text + "\r\n\r\n");
        EXPECT_EQ(std::strlen(block.header->other->text), 3 + 1021u + 61 * 1024u);
        EXPECT_EQ(take_log(1).size(), lines == 62 ? 0u : 1u);
    }
}

// Processor time of a block of so many lines for each chain; time that others use does not count.
TEST_F(HeaderBlock, many_lines_take_time_in_proportion) {
    const auto seconds = [this](int lines) {
        std::string text;
        for (int i = 0; i < lines; ++i) text += "X: 1\r\nReceived: 2\r\n";
        const clock_t start = std::clock();
        const Block block = parse(text);
        EXPECT_EQ(block.lines, 2 * lines);
        for (const ms* chain : {block.header->received, block.header->other}) {
            int count = 0;
            for (; chain; chain = chain->next) ++count;
            EXPECT_EQ(count, lines);
        }
        return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    };
    const double few = seconds(10000);
    EXPECT_LT(seconds(80000), 24 * few + 0.1) << "eight times as many lines";
}

TEST_F(HeaderBlock, read_errors_are_logged) {
    const LogLine failed{1, "ParseHdr", "getline failed."};
    const Header header(New822Header());
    int lines = 7;
    EXPECT_EQ(VEL_ParseHdr(-1, header.get(), &lines, nullptr), 0);
    EXPECT_EQ(lines, 0);
    EXPECT_THAT(take_log(), testing::ElementsAre(failed));
    const int handle = fileopen(directory().c_str(), 1, 0);
    EXPECT_EQ(ParseHdr(handle, header.get(), nullptr, nullptr), 0);
    EXPECT_THAT(take_log(), testing::Contains(failed));
    EXPECT_EQ(ParseHdr(handle, nullptr, nullptr, nullptr), 0);
    fileclose(handle);
}

// Blocks of random text end where the first empty line of a plain reading stands.
TEST_F(HeaderBlock, random_blocks_end_at_their_empty_lines) {
    constexpr const char* kPieces[] = {"To:",  "From ",  "Date:",     "X",        ": ", " ",   "\t",
                                       "\r\n", "\r\n ",  "\n",        "\r\n",     "\r", "a@b", ",",
                                       "\"",   "Status", "Received:", "1 Feb 99", "<",  "\xe9"};
    Random random(561);
    std::string text;
    for (int n = 0; n < 50000; ++n) text += kPieces[random.below(std::size(kPieces))];
    std::vector<int> expected;
    int lines = 0;
    std::istringstream plain(text += "\n\n");
    for (std::string line; std::getline(plain, line);) {
        ++lines;
        if (line.empty() || line == "\r") expected.push_back(std::exchange(lines, 0));
    }
    const int handle = fileopen(file("blocks", text).c_str(), 1, 0);
    for (const int count : expected) {
        const Header header(New822Header());
        ASSERT_EQ(ParseHdr(handle, header.get(), &lines, nullptr), 1);
        ASSERT_EQ(lines, count);
    }
    fileclose(handle);
    EXPECT_GT(expected.size(), 300u);
}

class HeaderField : public HeaderTest {};

TEST_F(HeaderField, returns_its_code) {
    const struct {
        const char* field;
        int code;
    } cases[] = {
        {"To: a@b", 1},
        {"RESENT-FROM:", 27},
        {"Return-Receipt-To: a", 10},
        {"From x", 19},
        {"From", 19},
        {"from: x", 2},
        {"Date: x", 12},
        {"Resent-Date:", 28},
        {"Status", 20},
        {"Status: x", 20},
        {"Recvdate: x", 29},
        {"recvdate", -1},
        {"X: y", 29},
        {":", 29},
        {"", -1},
        {"To", -1},
        {"To : a@b", -1},
        {"\r\n\tTo: a", -1},
        {"To\n: a", -1},
        {"To\r: a", 29},
        {"Status x: y", 20},
        {"Statu\xd3: y", 29},
        {"Content-Transfer-Encodings: y", 29},
    };
    const Header header(New822Header());
    for (const auto& c : cases) EXPECT_EQ(ParseLine(exact(c.field).get(), header.get()), c.code) << c.field;
    EXPECT_EQ(ParseLine(nullptr, header.get()), -1);
    EXPECT_EQ(ParseLine("To: a@b", nullptr), -1);
    EXPECT_EQ(ParseLine((std::string(100000, 'x') + ": y").c_str(), header.get()), 29);
}

TEST_F(HeaderField, unfolds_line_breaks_with_the_white_space_behind_them) {
    const Header header(New822Header());
    ParseLine("Sender: \r\n a\r\n\r\n \tb\nc\rd \n", header.get());
    EXPECT_STREQ(header->sender, "a b c\rd  ");
}

TEST_F(HeaderField, appends_to_what_a_record_holds) {
    const Header header(New822Header());
    for (const char* field : {"Received: 1", "X: 1", "To: a@b", "Received: 2", "X: 2", "To: c@d"}) {
        ParseLine(field, header.get());
    }
    EXPECT_EQ(describe(*header), "to=<a@b>|<c@d> received=[1][2] other=[X: 1][X: 2]");
}

// A second start must not touch locks that somebody holds.
TEST_F(HeaderField, locks_survive_a_second_start) {
    for (CRITICAL_SECTION* lock : {&csParseHdr, &csRecipParse}) {
        EnterCriticalSection(lock);
        Init822Parser();
        std::thread([lock] { EXPECT_EQ(pthread_mutex_trylock(lock), EBUSY); }).join();
        LeaveCriticalSection(lock);
    }
    Terminate822Parser();
    Terminate822Parser();
    Init822Parser();
    EXPECT_EQ(parse("To: a@b\r\n\r\n").result, 1);
    Free822Header(nullptr);
}

class HeaderThreads : public HeaderTest {};

// Nothing is read, so that no slow file is taken for waiting.
TEST_F(HeaderThreads, the_parsers_lock_is_held) {
    expect_waits_for(csParseHdr, [] { EXPECT_EQ(ParseHdr(-1, nullptr, nullptr, nullptr), 0); });
}

TEST_F(HeaderThreads, blocks_are_parsed_in_parallel) {
    constexpr int kThreads = 4;
    std::vector<std::string> wrong(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([this, i, &wrong] {
            const std::string n = std::to_string(i);
            const std::string expected = "to=Name " + n + "<a" + n + "@b> other=[X: " + n + "]";
            for (int round = 0; round < 100; ++round) {
                const Block block = parse("To: Name " + n + " <a" + n + "@b>\r\nX: " + n + "\r\n\r\n", n.c_str());
                const std::string got = describe(*block.header);
                if (got != expected) wrong[static_cast<std::size_t>(i)] = got;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(wrong, testing::Each(""));
}

}  // namespace
}  // namespace vel::test
