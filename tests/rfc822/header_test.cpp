#include <pthread.h>

#include <cerrno>
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
    using List = std::pair<const char*, const addrlist822*>;
    for (const auto& [name, list] :
         {List("to", h.to), List("resent-to", h.resent_to), List("cc", h.cc), List("resent-cc", h.resent_cc),
          List("bcc", h.bcc), List("resent-bcc", h.resent_bcc), List("from", h.from),
          List("resent-from", h.resent_from), List("reply-to", h.reply_to), List("receipt-to", h.return_receipt_to)}) {
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
    for (const ms* chain : {h.received, h.other}) {
        if (chain) part(chain == h.received ? "received" : "other", "");
        for (; chain; chain = chain->next) text += '[' + std::string(chain->text) + ']';
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
    std::string_view text;  // LF alone stands for CR LF, "~" for LF
    const char* record;
    int lines;
    int status = 0;
    const char* name = "";
};

using namespace std::string_view_literals;

constexpr Case kCases[] = {
    {"From: Sales\n Desk\n\t<sd@x.y>\n\nbody\n"sv, "from=Sales Desk<sd@x.y>", 4},
    {"To: a@b, c@d\nCc:\nTO:e@f\n\n"sv, "to=<a@b>|<c@d>|<e@f> cc=", 4},
    {"Subject: a\nSubject: b\n\n"sv, "subject=[a]", 3},
    {"Subject: a \n   b\n\n"sv, "subject=[a \r\n\tb]", 3},
    {"Sender: a\n \tb \n c\n\n"sv, "sender=[a b  c]", 4},
    {"Subject:\n x\n\n"sv, "subject=[x]", 3},
    {"Subject:\t x \n\n"sv, "subject=[x ]", 2},
    {"Date: 1 Feb 99 10:20 EST\nResent-Date: 2 Feb 99\n\n"sv, "date=[DR Mon, 1 Feb 1999 10:20 -0500]", 3},
    {"Resent-Date: 2\n Feb 99\nDate: 1 Feb 99\n\n"sv, "date=[DR Tue, 2 Feb 1999 00:00 +0000]", 4},
    {"X-MAILER:  a\n\tB\nother: c\n: d\nX:\n\n"sv, "other=[X-mailer: a\r\n\tB][Other: c][: d][X: ]", 6, 0,
     "kept_names_of_other_lines"},
    {"Received: from a\n by b\nReceived: c\n\n"sv, "received=[from a\r\n\tby b][c]", 4},
    {"Subject : a\nTo\t: a@b\n\n"sv, "", 3, 0, "kept_blank_before_the_colon"},
    {"Hello\n>From x\nworld\n\n"sv, "", 4},
    {"From a@b Mon Feb  1 10:20:30 1999\nfrom\n\n"sv, "separator=[a@b Mon Feb  1 10:20:30 1999]", 3},
    {"A: 1\nB: 2\nC: 3\nStatus: RO\n\n"sv, "status=[RO] other=[A: 1][B: 2][C: 3]", 5, 4},
    {"A: 1\nB: 2\nSTATUS: R\n O\nD: 4\nE: 5\n\n"sv, "status=[R\r\n\tO] other=[A: 1][B: 2][D: 4][E: 5]", 7, 4},
    {"Status RO\n\n"sv, "status=[RO]", 2, 1, "kept_status_without_colon"},
    {"Status: a\nX: 1\nStatus\n\n"sv, "status=[a] other=[X: 1]", 4, 3},
    {"Status-X: 1\nStatu: 2\n\n"sv, "other=[Status-x: 1][Statu: 2]", 3},
    {""sv, "", 0},
    {"Subject: a~To: a@b~~To: c@d~"sv, "to=<a@b> subject=[a]", 3},
    {"Subject: a\rTo: a@b\r\n\n"sv, "subject=[a\rTo: a@b\r]", 2},
    {" x: y\n z\nTo: a@b\n\n"sv, "to=<a@b>", 4},
    {"Subject: a\n \t \nTo: a@b\n\n"sv, "to=<a@b> subject=[a\r\n\t]", 4, 0, "kept_white_space_does_not_end_the_block"},
    {"Subject: a\0b\nTo: a@b\n\0\nTo: c@d\n"sv, "to=<a@b> subject=[a]", 3, 0, "kept_nul_ends_a_line"},
    {"To: a@b\nResent-To: b@b\nCc: c@b\nResent-Cc: d@b\nBcc: e@b\nResent-Bcc: f@b\nFrom: g@b\nResent-From: h@b\n"
     "Reply-To: i@b\nReturn-Receipt-To: j\n @b\nMessage-ID: 1\nResent-Message-ID: 2\nIn-Reply-To: 3\nReferences: 4\n"
     "Return-Path: 5\nMIME-Version: 6\nContent-Type: 7\nContent-Transfer-Encoding: 8\nContent-ID: 9\n"
     "Content-Description: 10\n\n"sv,
     "to=<a@b> resent-to=<b@b> cc=<c@b> resent-cc=<d@b> bcc=<e@b> resent-bcc=<f@b> from=<g@b> resent-from=<h@b> "
     "reply-to=<i@b> receipt-to=<j@b> id=[1] resent-id=[2] in-reply-to=[3] references=[4] return-path=[5] "
     "version=[6] type=[7] encoding=[8] content-id=[9] description=[10]",
     22},
};

TEST_F(HeaderBlock, stores_fields_and_counts_lines) {
    for (const Case& c : kCases) {
        std::string text = crlf(c.text);
        std::replace(text.begin(), text.end(), '~', '\n');
        const Block block = parse(text);
        EXPECT_EQ(block.result, 1) << c.name << c.text;
        EXPECT_EQ(describe(*block.header), c.record) << c.name << c.text;
        EXPECT_EQ(block.lines, c.lines) << c.name << c.text;
        EXPECT_EQ(block.status, c.status) << c.name << c.text;
    }
    EXPECT_EQ(parse("To: a@b\r\n\r\nbody\r\n").next, "body\r\n");
}

TEST_F(HeaderBlock, a_field_that_is_no_date_gets_the_current_time) {
    const Block block = parse("Date: yesterday\r\nResent-Date: 1 Feb 99\r\n\r\n");
    ASSERT_TRUE(block.header->date && block.header->date->time);
    const UTCtime& got = *block.header->date->time;
    tm local{got.second, got.minute, got.hour, got.day, got.month - 1, got.year - 1900, 0, 0, -1, 0, nullptr};
    EXPECT_LE(std::abs(std::difftime(::mktime(&local), ::time(nullptr))), 3600.0 + 60);
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
        const bool fits = size == kHeld;
        EXPECT_EQ(block.result, 1);
        EXPECT_EQ(std::strlen(block.header->other->text) + 2 == size, fits);
        EXPECT_EQ(block.header->to != nullptr, fits);
        EXPECT_EQ(block.next, fits ? "" : "To: a@b\r\n");
        const LogLine too_many{1, "ParseHdr", "too many headers to parse."};
        EXPECT_EQ(take_log(), fits ? std::vector<LogLine>{} : std::vector<LogLine>{too_many});
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

// A walk along the chains for each line would take minutes.
TEST_F(HeaderBlock, many_lines_are_read_in_time) {
    std::string text;
    for (int i = 0; i < 300'000; ++i) text += "X: 1\r\nReceived: 2\r\n";
    EXPECT_EQ(parse(text).lines, 600'000);
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

class HeaderField : public HeaderTest {};

TEST_F(HeaderField, returns_its_code) {
    const std::pair<int, const char*> rows[] = {
        {1, "To: a@b"},
        {27, "RESENT-FROM:"},
        {10, "Return-Receipt-To: a"},
        {19, "From x|From"},
        {2, "from: x"},
        {12, "Date: x"},
        {28, "Resent-Date:"},
        {20, "Status|Status: x|Status x: y"},
        {29, "Recvdate: x|X: y|:|To\r: a|Statu\xd3: y|Content-Transfer-Encodings: y"},
        {-1, "recvdate||To|To : a@b|\r\n\tTo: a|To\n: a"},
    };
    const Header header(New822Header());
    for (const auto& [code, fields] : rows) {
        for (const std::string& field : split(fields)) {
            EXPECT_EQ(ParseLine(exact(field).get(), header.get()), code) << field;
        }
    }
    EXPECT_EQ(ParseLine(nullptr, header.get()), -1);
    EXPECT_EQ(ParseLine("To: a@b", nullptr), -1);
    EXPECT_EQ(ParseLine((std::string(100000, 'x') + ": y").c_str(), header.get()), 29);
}

TEST_F(HeaderField, unfolds_and_appends_to_what_a_record_holds) {
    const Header header(New822Header());
    for (const std::string& field : split("Received: 1|X: 1|To: a@b|Received: 2|X: 2|To: c@d")) {
        ParseLine(field.c_str(), header.get());
    }
    ParseLine("Sender: \r\n a\r\n\r\n \tb\nc\rd \n", header.get());
    EXPECT_EQ(describe(*header), "to=<a@b>|<c@d> sender=[a b c\rd  ] received=[1][2] other=[X: 1][X: 2]");
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
