// Messages and the trees that they parse into, MIME and flat.
#include <sys/stat.h>

#include <ctime>
#include <string>

#include "mime/boundary_pool.h"
#include "mime/message_pool.h"
#include "mime/record.h"
#include "tests/mime/tree.h"
#include "tests/support/fixture.h"
#include "vel/mime.h"

namespace vel::test {
namespace {

using testing::ElementsAre;

constexpr const char* kReadFailed = "ParseMimeMessage: getline failed.";
constexpr const char* kNotValid = "ParseMimeMessage: not a valid MIME message.";

struct Row {
    std::string message;
    std::string tree;
    std::string errors = "";  // the lines at level 1, "|" behind each
};

class ParserTest : public VelTest {
  protected:
    ~ParserTest() override { MimeFreeMessage(&pool_); }

    // Parses a message, "/" standing for CR LF and "|" for a slash, and shows its tree, or "refused".
    std::string parse(std::string_view shorthand, bool nested = true) {
        message_.clear();
        for (const char c : shorthand) message_ += c == '/' ? "\r\n" : std::string(1, c == '|' ? '/' : c);
        return parse_message(nested);
    }

    std::string parse_message(bool nested = true) {
        MimeFreeMessage(&pool_);
        const int count = MimeParseMessage(file("message", message_).c_str(), nested, &pool_);
        EXPECT_EQ(count, pool_ ? pool_->count : -1);
        return pool_ ? tree(*pool_, message_) : "refused";
    }

    void check(const Row& row, bool nested = true) {
        SCOPED_TRACE(row.message);
        EXPECT_EQ(parse(row.message, nested), row.tree);
        std::string errors;
        for (const std::string& line : take_log(1)) errors += line + "|";
        EXPECT_EQ(errors, row.errors);
    }

    const MimeMsg& record(int index) const { return *pool_->items[index]; }
    std::string headers_of(int index) const {
        return shown(std::string_view(message_).substr(record(index).headerStart,
                                                       record(index).bodyStart - record(index).headerStart));
    }

    std::string message_;
    mime_msg_pool* pool_ = nullptr;
};

// A message in the shorthand of parse.
std::string mime(const std::string& text) { return "MIME-Version: 1.0/" + text; }

const std::string kMixed = mime("Content-Type: multipart|mixed; boundary=\"b\"//");

TEST_F(ParserTest, mime_messages) {
    const Row rows[] = {
        {mime("Content-Type: text|html//body/"), "text/html \"body/\""},
        {mime("/"), "- \"\""},
        {mime("Subject: x/"), "- \"MIME-Version: 1.0/Subject: x/\""},
        {kMixed + "preamble/--b//one/--b/Content-Type: a|b//two/--b--/epilogue/",
         "multipart/mixed { - \"one/\" a/b \"two/\" }"},
        {kMixed + "text/", "refused", kNotValid + std::string("|")},
        {mime("Content-Type: multipart|mixed//--b/"), "refused", "ParseMimeMessage: boundary line is missing.|"},
        {mime("Content-Type: multipart|mixed; boundary=\"\"//--//one/--b//two/----/"),
         "multipart/mixed { - \"one/-\" - \"two/\" }"},
        {kMixed + "--b/Content-Type: a|b/--b//two/--b--/", "multipart/mixed { a/b \"\" - \"two/\" }"},
        {kMixed + "--b//one/--b//two/", "multipart/mixed { - \"one/\" }", kReadFailed + std::string("|")},
        {kMixed + "--b//one/--b/Subject: x/", "multipart/mixed { - \"one/\" }"},
        {kMixed + "--b//one/--b/Content-Type: a|b/", "refused", kNotValid + std::string("|")},
        {kMixed + "--b/Content-Type: multipart|alternative; boundary=c//--c//x/--c--/between/--b//two/--b--/",
         "multipart/mixed { multipart/alternative { - \"x/\" } - \"two/\" }"},
        {kMixed + "--b/Content-Type: multipart|digest; boundary=bb//--bb//x/--bb--/--b//y/--b--/",
         "multipart/mixed { multipart/digest { - \"x/\" } - \"y/\" }"},
        {kMixed + "--b/Content-Type: message|rfc822//Subject: in//x/--b//two/--b--/",
         "multipart/mixed { message/rfc822 { - \"x/\" } - \"two/\" }"},
        {kMixed +
             "--b/Content-Type: message|rfc822//Content-Type: multipart|x; boundary=c//--c//x/--c--/--b//two/--b--/",
         "multipart/mixed { message/rfc822 { multipart/x { - \"x/\" } } - \"two/\" }"},
        {mime("Content-Type: message|rfc822//Content-Type: message|rfc822//Subject: x//y/"),
         "message/rfc822 { message/rfc822 { - \"y/\" } }"},
        {mime("Content-Type: message|rfc822/Content-Transfer-Encoding: base64//QUJD/"), "message/rfc822 \"QUJD/\""},
        {mime("Content-Type: |plain//x/"), "refused",
         "\"content-type:\" field invalid. Misplaced slash.|" + std::string(kNotValid) + "|"},
        {"#Fa@b/#Rc@d/" + mime("Content-Type: a|b//x/"), "a/b \"x/\""},
        {kMixed + "--b//one/--b--/--b--/--b//two/", "multipart/mixed { - \"one/\" }"},
    };
    for (const Row& row : rows) check(row);
    check({kMixed + "--b/Content-Type: message|rfc822//Subject: in//x/--b--/",
           "multipart/mixed { message/rfc822 \"Subject: in//x/\" }"},
          false);
}

// What stands behind the delimiter on its line stays in the body before it.
TEST_F(ParserTest, kept_bodies_lose_a_bare_delimiter_line) {
    check({kMixed + "--b//one/--b  //two/--b-- /", "multipart/mixed { - \"one/--\" - \"two/-\" }"});
    check({kMixed + "--b//one/--b--", "multipart/mixed { - \"one\" }"});
}

TEST_F(ParserTest, kept_a_level_is_looked_up_by_the_whole_line) {
    check({kMixed + "--b/Content-Type: a|b/--b-- //--b//lost/--b--/", "multipart/mixed { a/b \"\" }"});
}

TEST_F(ParserTest, kept_a_delimiter_that_ends_in_hyphens_closes) {
    check({mime("Content-Type: multipart|mixed; boundary=\"x--\"//--x--/Content-Type: message|rfc822//S: "
                "y//z/--x--//two/--x----/"),
           "multipart/mixed { message/rfc822 { - \"z/\" } }"});
}

TEST_F(ParserTest, kept_the_boundary_VEL_is_none) {
    check({mime("Content-Type: multipart|mixed; boundary=VEL//--VEL//one/--VEL//two/--VEL--/"),
           "multipart/mixed { - \"one/--VEL//two/--VEL--/\" }"});
}

TEST_F(ParserTest, kept_pieces_of_a_long_line_are_lines_of_a_message) {
    const std::string piece(1024, 'x');
    check({kMixed + "--b//" + piece + "--b//two/--b--/", "multipart/mixed { - \"" + piece + "\" - \"two/\" }"});
    check({mime(piece + "/Content-Type: a|b//y/"), "- \"Content-Type: a/b//y/\""});
}

TEST_F(ParserTest, kept_envelope_lines_are_skipped_in_a_part_too) {
    check({kMixed + "--b/#From here/#Rto there/Content-Type: a|b//x/--b--/", "multipart/mixed { a/b \"x/\" }"});
}

TEST_F(ParserTest, kept_an_unterminated_part_with_an_embedded_file_stays_in_the_pool) {
    check({kMixed + "--b//one/--b//begin 1 f/end/two/",
           "multipart/mixed { - \"one/\" } + - { x-embedded \"begin 1 f/end/\" }", kReadFailed + std::string("|")});
}

TEST_F(ParserTest, kept_an_unterminated_part_is_dropped_in_silence_under_the_lenient_grammar) {
    set("Options", "StrictMimeParsing", "NO");
    check({kMixed + "--b//one/--b//two/", "multipart/mixed { - \"one/\" }"});
}

TEST_F(ParserTest, embedded_files) {
    const Row rows[] = {
        {mime("/a/begin 644 f/#0V%T/`/"), "- \"a/begin 644 f/#0V%T/`/\""},
        {mime("/(this file MUST be converted with BinHex 4.0)//:abc/def:/x/"),
         "- { application/mac-binhex40 \"(this file MUST be converted with BinHex 4.0)//:abc/def:/\" }"},
        {kMixed + "--b//BEGIN 1 a/END/begin 1 b/end /end/--b--/",
         "multipart/mixed { - { x-embedded \"BEGIN 1 a/END/\" x-embedded \"begin 1 b/end /end/\" } }"},
        {mime("Content-Type: text|html//begin 644 f/`/end/"), "text/html \"begin 644 f/`/end/\""},
        {mime("Content-Type: text|plain//a/begin 644 f/#0V%T/`/end/b/"),
         "text/plain { x-embedded \"begin 644 f/#0V%T/`/end/\" }"},
    };
    for (const Row& row : rows) check(row);
    EXPECT_THAT(take_log(6), testing::Contains("Found embedded UUEncode attachment in body text/plain"));
}

TEST_F(ParserTest, flat_messages) {
    const Row rows[] = {
        {"Subject: x//body/", "- \"body/\""},
        {"MIME-Version: 2.0//body/", "- \"body/\""},
        {"", "- \"\""},
        {"Subject: x/", "- \"Subject: x/\""},
        {"S: x//a/begin 644 f/#0V%T/`/endless/b/", "- \"a/\" + x-embedded \"begin 644 f/#0V%T/`/endless/\" + - \"b/\""},
        {"S: x//begin 7 f/END/Begin 7 g/end/",
         "- \"\" + x-embedded \"begin 7 f/END/\" + - \"\" + x-embedded \"Begin 7 g/end/\" + - \"\""},
        {"S: x//begin again/end/", "- \"begin again/end/\""},
        {"S: x//a/begin 644 f/(This file must be converted with BinHex 4.0)/:a/b:/",
         "- \"a/begin 644 f/(This file must be converted with BinHex 4.0)/:a/b:/\""},
        {"S: x//(This file must be converted with BinHex 4.0)/x:/:a:/b/c:d/e/",
         "- \"\" + application/mac-binhex40 \"(This file must be converted with BinHex 4.0)/x:/:a:/b/c:d/\" + - "
         "\"e/\""},
    };
    for (const Row& row : rows) EXPECT_EQ(parse(row.message), row.tree) << row.message;
}

TEST_F(ParserTest, offsets_and_kinds) {
    message_ =
        "MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\npre\r\n--b\r\n"
        "Content-Type: message/rfc822\r\n\r\nSubject: in\r\n\r\nx\r\n--b\r\n\r\nlast\r\n--b--\r\nepilogue\r\n";
    parse_message();
    ASSERT_EQ(pool_->count, 4);
    const auto at = [&](std::string_view text, std::size_t from = 0) {
        return static_cast<uint32_t>(message_.find(text, from));
    };
    EXPECT_EQ(record(0).headerStart, 0u);
    EXPECT_EQ(record(0).bodyStart, at("--b\r\n"));
    EXPECT_EQ(record(0).bodyEnd, at("epilogue"));
    EXPECT_STREQ(record(0).boundary, "--b");
    EXPECT_EQ(record(1).headerStart, at("Content-Type: message"));
    EXPECT_EQ(record(1).bodyStart, at("Subject"));
    EXPECT_EQ(record(1).bodyEnd, record(2).bodyEnd) << "an enclosed message ends with its last part";
    EXPECT_STREQ(record(1).boundary, "--b");
    EXPECT_EQ(headers_of(2), "Subject: in//");
    EXPECT_EQ(headers_of(3), "/");
    EXPECT_EQ(record(3).bodyEnd, at("--b--"));
    std::vector<int> kinds;
    for (int i = 0; i < pool_->count; ++i) kinds.push_back(record(i).nodeKind);
    EXPECT_THAT(kinds, ElementsAre(1, 1, 2, 2));

    message_ = "MIME-Version: 1.0\r\nContent-Type: message/rfc822\r\n\r\nS: x\r\n\r\ny";
    parse_message();
    EXPECT_STREQ(record(0).boundary, "--VEL");
    EXPECT_EQ(record(1).bodyEnd, message_.size());
}

TEST_F(ParserTest, files_that_cannot_be_parsed) {
    mime_msg_pool* pool = reinterpret_cast<mime_msg_pool*>(this);
    EXPECT_EQ(MimeParseMessage((directory() / "missing").c_str(), 1, &pool), -1);
    EXPECT_EQ(pool, nullptr);
    EXPECT_EQ(MimeParseMessage("", 1, &pool), -1);
    EXPECT_EQ(MimeParseMessage(nullptr, 1, &pool), -1);
    EXPECT_EQ(MimeParseMessage(directory().c_str(), 1, nullptr), -1);
    EXPECT_EQ(ParseNonMimeMessage("", &pool), -1);
    EXPECT_THAT(take_log(), ElementsAre());
    EXPECT_EQ(ParseMimeMessage("", 1, &pool), -1);
    EXPECT_EQ(ParseMimeMessage((directory() / "missing").c_str(), 1, &pool), -1);
    EXPECT_EQ(ParseMimeMessage(directory().c_str(), 1, &pool), -1);
    EXPECT_THAT(take_log(1), ElementsAre("ParseMimeMessage: filename not valid.",
                                         "ParseMimeMessage: file cannot be read.", "ReadFile failed.", kReadFailed));
    EXPECT_EQ(MimeParseMessage(directory().c_str(), 1, &pool), -1);
    EXPECT_THAT(take_log(1), ElementsAre("ReadFile failed.", "getline failed.", "ReadFile failed.",
                                         "ParseNonMimeMessage failed: getline failed."));
}

// Truncated anywhere, any message parses or is refused, and every entity lies within the file.
TEST_F(ParserTest, survives_truncation_at_every_byte) {
    const std::string whole =
        "MIME-Version: 1.0 (c)\r\nContent-Type: multipart/mixed;\r\n boundary=\"b\"\r\n\r\n--b\r\n"
        "Content-Type: message/rfc822\r\n\r\nContent-Type: multipart/x; boundary=c\r\n\r\n--c\r\n\r\nbegin 1 f\r\n"
        "end\r\n--c--\r\n--b\r\nContent-Disposition: a; filename=\"x\\\"\"\r\n\r\nx\r\n--b--\r\n";
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        message_ = whole.substr(0, length);
        const std::string result = parse_message();
        for (int i = 0; pool_ && i < pool_->count; ++i) {
            EXPECT_LE(record(i).bodyEnd, length) << result;
            EXPECT_LE(record(i).headerStart, record(i).bodyEnd) << result;
        }
        take_log();
    }
    EXPECT_EQ(tree(*pool_, message_),
              "multipart/mixed { message/rfc822 { multipart/x { - { x-embedded \"begin 1 f/end/\" } } } - \"x/\" }");
}

TEST_F(ParserTest, a_hundred_thousand_parts) {
    message_ = "MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n";
    for (int i = 0; i < 100000; ++i) message_ += "--b\r\n\r\nx\r\n";
    message_ += "--b--\r\n";
    parse_message();
    ASSERT_EQ(pool_->count, 100001);
    EXPECT_EQ(record(0).numChildren, 65535);
    EXPECT_EQ(record(100000).nodeKind, 2) << "a child, though unlinked";
    char* body = MimeGetBody(pool_->items[100000], 0, -1);
    EXPECT_EQ(content(body), "x\r\n");
    MimeFreeFile(body);
    int leaves = 1;
    EXPECT_EQ(MimeGetNumLeafBodyParts(&record(0), &leaves), 0);
    EXPECT_EQ(leaves, 65535);
}

// Multiparts, every third one followed by an enclosed message, all open at once.
std::string open_levels(int count) {
    std::string message = "MIME-Version: 1.0\r\n";
    for (int i = 0; i < count; ++i) {
        const std::string boundary = std::to_string(i) + "x";
        message += "Content-Type: multipart/mixed; boundary=" + boundary + "\r\n\r\n--" + boundary + "\r\n";
        if (i % 3 == 0) message += "Content-Type: message/rfc822\r\n\r\n";
    }
    return message;
}

TEST_F(ParserTest, ten_thousand_levels) {
    std::string message = open_levels(10000) + "\r\nbody\r\n";
    for (int i = 9999; i >= 0; --i) message += "--" + std::to_string(i) + "x--\r\n";
    ASSERT_EQ(MimeParseMessage(file("message", message).c_str(), 1, &pool_), 10000 + 3334 + 1);
    EXPECT_EQ(record(0).bodyEnd, message.size());
    int leaves = 1;
    int containers = 0;
    MimeGetNumLeafBodyParts(&record(0), &leaves);
    MimeGetNumMultipartHeaders(&record(0), &containers);
    EXPECT_EQ(leaves, 1);
    EXPECT_EQ(containers, 13334);
}

// Each enclosed message looks its delimiter up among all open levels.
TEST_F(ParserTest, delimiters_below_many_open_levels) {
    const auto seconds = [this](int levels) {
        std::string message = open_levels(levels);
        const std::string last = "\r\n--" + std::to_string(levels - 1) + "x\r\n";
        for (int i = 0; i < 20000; ++i) message += "Content-Type: message/rfc822\r\n\r\n" + last;
        const std::string path = file("message", message);
        const std::clock_t start = std::clock();
        MimeFreeMessage(&pool_);
        EXPECT_GT(MimeParseMessage(path.c_str(), 1, &pool_), 40000);
        take_log();
        return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    };
    const double alone = seconds(2);
    EXPECT_LT(seconds(2000), 3 * alone + 0.2);
}

TEST_F(ParserTest, deep_comments_and_long_parameter_lists) {
    std::string opened, closed, parameters;
    for (int i = 0; i < 50000; ++i) {
        opened += "(((((/ ";
        closed += ")))))/ ";
        parameters += ";/ p" + std::to_string(i) + "=\"v\"";
    }
    EXPECT_EQ(parse("MIME-Version: 1.0 " + opened + closed + "/Content-Type: a|b" + parameters + "//"), "a/b \"\"");
    int count = 0;
    for (const ms* node = record(0).contentTypeParams; node; node = node->next) ++count;
    EXPECT_EQ(count, 50000);
    take_log();
}

TEST(PoolTest, levels_are_found_by_text) {
    boundary_pool pool;
    EXPECT_EQ(AddBoundaryNode(&pool, "", 0), -1);
    for (const char* text : {"--a", "--B", "--a", "--c"}) AddBoundaryNode(&pool, text, 99);
    EXPECT_EQ(GetMimeLevelFromBoundary(3, "--A", &pool, 0), 0) << "the lowest level, letter case aside";
    EXPECT_EQ(GetMimeLevelFromBoundary(3, "--b", &pool, 1), 0) << "closing: the level around";
    EXPECT_EQ(GetMimeLevelFromBoundary(2, "--c", &pool, 0), -1) << "above the highest";
    AddBoundaryNode(&pool, "--d", 0);
    EXPECT_EQ(GetMimeLevelFromBoundary(3, "--a", &pool, 0), 2);
    AddBoundaryNode(&pool, "--D", 0);
    EXPECT_STREQ(GetBoundaryFromPool(&pool, 0), "--D");
    EXPECT_EQ(GetMimeLevelFromBoundary(3, "--d", &pool, 0), 0);
    DelBoundaryNode(&pool, 2);
    EXPECT_EQ(GetMimeLevelFromBoundary(3, "--a", &pool, 0), -1);
    EXPECT_EQ(GetBoundaryFromPool(&pool, 2), nullptr);
    FreeBoundaryPool(&pool);
    EXPECT_EQ(GetBoundaryFromPool(&pool, 0), nullptr);
}

TEST(PoolTest, records_are_put_replaced_and_deleted) {
    mime_msg_pool pool{};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(AddToMsgPool(&pool, AllocateNewMsg("p"), 100), 0);
    MimeMsg* replaced = GetFromMsgPool(&pool, 1);
    MimeMsg* replacement = AllocateNewMsg("q");
    EXPECT_EQ(AddToMsgPool(&pool, replacement, 1), 0);
    EXPECT_EQ(pool.count, 5);
    EXPECT_EQ(GetFromMsgPool(&pool, 1), replacement);
    FreeMsgTree(&replaced);
    EXPECT_EQ(replaced, nullptr);
    EXPECT_EQ(DelFromMsgPool(&pool, 5), -1);
    EXPECT_EQ(DelFromMsgPool(&pool, 2), 0);
    EXPECT_EQ(GetFromMsgPool(&pool, 2), nullptr);
    EXPECT_EQ(GetFromMsgPool(&pool, -1), nullptr);
    EXPECT_EQ(DelFromMsgPool(&pool, 0), 0);
    EXPECT_EQ(pool.items, nullptr);
    EXPECT_EQ(AllocateNewMsg(nullptr), nullptr);
}

// Freed without a call for each level; leaks and stack use show under the sanitizers.
TEST(PoolTest, trees_of_any_depth_are_freed) {
    MimeMsg* top = AllocateNewMsg("p");
    MimeMsg* at = top;
    for (int i = 0; i < 200000; ++i) {
        MimeMsg* child = AllocateNewMsg("p");
        ASSERT_EQ(AddMsgNodeToTree(at, child), 0);
        AddMsgNodeToTree(at, AllocateNewMsg("p"));
        at = child;
    }
    int containers = 0;
    MimeGetNumMultipartHeaders(top, &containers);
    EXPECT_EQ(containers, 200000);
    FreeMsgTree(&top);
    EXPECT_EQ(top, nullptr);
    EXPECT_EQ(AddMsgNodeToTree(nullptr, nullptr), -1);
}

}  // namespace
}  // namespace vel::test
