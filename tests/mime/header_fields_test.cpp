// MIME header fields: one row a field, with what is stored, what is logged, and what is read next.
#include <cstring>
#include <string>

#include "frame/ascii.h"
#include "mime/field_text.h"
#include "mime/message_pool.h"
#include "mime/record.h"
#include "mime/token.h"
#include "tests/support/fixture.h"
#include "vel/mime.h"

namespace vel::test {
namespace {

using testing::ElementsAre;

std::string chain_text(const ms* chain) {
    std::string result;
    for (; chain; chain = chain->next) result += std::string("; ") + chain->text;
    return result;
}

// The fields that are there, each as name=value, with parameters behind the value.
std::string stored(const MimeMsg& record) {
    std::string result;
    const auto add = [&](const char* name, const std::string& value) {
        result += std::string(name) + "=" + value + "|";
    };
    if (record.mimeVersion != 0) add("version", std::to_string(record.mimeVersion).substr(0, 4));
    if (record.contentID) add("id", record.contentID);
    if (record.contentDescription) add("description", record.contentDescription);
    if (record.contentType) {
        add("type", std::string(record.contentType) + "/" + (record.contentSubtype ? record.contentSubtype : "") +
                        chain_text(record.contentTypeParams));
    }
    if (record.contentTransferEncoding) add("encoding", record.contentTransferEncoding);
    if (record.contentDisposition) {
        add("disposition", record.contentDisposition + chain_text(record.contentDispositionParams));
    }
    return result;
}

class HeaderFieldTest : public VelTest {
  protected:
    HeaderFieldTest() { read_ = AllocateNewMsg("unused"); }
    ~HeaderFieldTest() override {
        FreeMsgNode(read_);
        std::free(read_);
    }

    // Parses every line of a header block as the message parser does. Answers what is stored, or
    // "refused".
    std::string parse(std::string_view block) {
        FreeMsgNode(read_);
        *read_ = {};
        VEL_FILE* file = FileOpen(this->file("block", block).c_str(), 1);
        char* line = nullptr;
        int result = 0;
        while (result == 0 && GetLine(file, &line) == 1 && std::string_view(line) != "\r\n") {
            result = ParseMimeHeaders(file, read_, line);
        }
        FileClose(file);
        return result == 0 ? stored(*read_) : "refused";
    }

  private:
    MimeMsg* read_;
};

struct Row {
    const char* name;
    std::string block;
    std::string stored;
    std::vector<std::string> errors;  // at level 1
};

constexpr const char* kContinuation = "\" field invalid. Invalid comment or continuation.";

TEST_F(HeaderFieldTest, fields) {
    const std::string big(16400, 'x');
    const Row rows[] = {
        {"no MIME field", "Subject: x\r\nX-Content-Type: a/b\r\nContent-Type : a/b\r\n\r\n", "", {}},
        {"any case, all fields",
         "mime-VERSION: 1.0 (made \\) (by hand))\r\nCONTENT-ID: <a@b>\r\nContent-Description: \t two words \r\n"
         "content-type: Text/Plain\r\nContent-Transfer-Encoding: BASE64 (really)\r\n\r\n",
         "version=1.00|id=<a@b>|description=two words |type=Text/Plain|encoding=BASE64|",
         {}},
        {"version 1.1", "MIME-Version: 1.1\r\n\r\n", "version=1.10|", {}},
        {"version of zero", "MIME-Version: nothing\r\n\r\n", "refused", {"\"mime-version:\" field invalid."}},
        {"version missing", "MIME-Version:\r\n\r\n", "refused", {"\"mime-version:\" field invalid."}},
        {"text behind the version", "MIME-Version: 1.0 x\r\n\r\n", "refused", {}},
        {"id without brackets", "Content-ID: a@b\r\n\r\n", "refused", {"\"content-id:\" field invalid."}},
        {"id folded", "Content-ID:\r\n\t<a@b>\r\n (c)\r\n\r\n", "id=<a@b>|", {}},
        {"empty description", "Content-Description:  \r\n\r\n", "", {}},
        {"description folded", "Content-Description: a\r\n b\r\n\r\n", "description=a|", {}},
        {"parameters",
         "Content-Type: text/plain; charset=us-ascii (plain); format=flowed;; ; x=\"a;b\"\r\n\r\n",
         "type=text/plain; charset=us-ascii; format=flowed; x=\"a;b\"|",
         {}},
        {"folded parameter, next field unharmed",
         "Content-Type: multipart/mixed;\r\n\tboundary=\"a b\"\r\nContent-ID: <i>\r\n\r\n",
         "id=<i>|type=multipart/mixed; boundary=\"a b\"|",
         {}},
        {"a blank line inside a fold", "Content-Type: a/b;\r\n \r\n\t\r\n c=d\r\n\r\n", "type=a/b; c=d|", {}},
        {"escapes are resolved, quotes kept",
         "Content-Type: a/b; n=\"x\\\"y\\\\z\\q\"\r\n\r\n",
         "type=a/b; n=\"x\"y\\z\\q\"|",
         {}},
        {"quoted value folded", "Content-Type: a/b; n=\"x\r\n\t y\"; m=1\r\n\r\n", "type=a/b; n=\"x y\"; m=1|", {}},
        {"escaped line end kept", "Content-Type: a/b; n=\"x\\\r\n y\"\r\n\r\n", "type=a/b; n=\"x\r\ny\"|", {}},
        {"blanks around = before a quote", "Content-Type: a/b; n = \"x y\"\r\n\r\n", "type=a/b; n=\"x y\"|", {}},
        {"no slash", "Content-Type: text\r\n\r\n", "type=application/octet-stream|", {}},
        {"comment behind the subtype",
         "Content-Type: text/plain(c); a=b\r\n\r\n",
         "type=application/octet-stream|",
         {}},
        {"type too long",
         "Content-Type: text/" + std::string(260, 'x') + "\r\n\r\n",
         "type=application/octet-stream|",
         {}},
        {"misplaced slash",
         "Content-Type: /plain\r\n\r\n",
         "refused",
         {"\"content-type:\" field invalid. Misplaced slash."}},
        {"missing subtype",
         "Content-Type: text/ ;a=b\r\n\r\n",
         "refused",
         {"\"content-type:\" field invalid. Missing subtype."}},
        {"no separator",
         "Content-Type: text/plain charset=x\r\n\r\n",
         "refused",
         {"\"content-type:\" field invalid. Missing parm separator."}},
        {"no value",
         "Content-Type: text/plain; charset\r\n\r\n",
         "refused",
         {"Invalid parm in \"content-type:\" header: charset\r\n"}},
        {"blank value",
         "Content-Type: text/plain; charset=\r\n\r\n",
         "refused",
         {"Invalid parm in \"content-type:\" header: charset=\r\n"}},
        {"bad name, cut to twenty",
         "Content-Type: a/b; n<n=0123456789012345678\r\n\r\n",
         "refused",
         {"Invalid parm in \"content-type:\" header: n<n=0123456789012345"}},
        {"open quote",
         "Content-Type: a/b; n=\"x\r\nSubject: y\r\n\r\n",
         "refused",
         {"Missing quote in \"content-type:\" parms."}},
        {"open quote at the end of the file",
         "Content-Type: a/b; n=\"x\r\n",
         "refused",
         {"\"content-type:\" field invalid. Premature end of file, or file read error."}},
        {"a later type takes the earlier one's parameters",
         "Content-Type: a/b; c=d\r\nContent-Type: text\r\n\r\n",
         "type=application/octet-stream|",
         {}},
        {"disposition",
         "Content-Disposition: attachment; filename=\"a b\"; size=3\r\n\r\n",
         "disposition=attachment; filename=\"a b\"; size=3|",
         {}},
        {"blank disposition parameter",
         "Content-Disposition: a; filename=\r\n\r\n",
         "refused",
         {"Invalid parm in \"content-disposition:\" header: filename=\r\n"}},
        {"bad encoding",
         "Content-Transfer-Encoding: a/b\r\n\r\n",
         "refused",
         {"\"content-transfer-encoding:\" field invalid."}},
        {"nothing there", "Content-Transfer-Encoding: (c)\r\n\r\n", "refused", {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(parse(row.block), row.stored);
        EXPECT_EQ(take_log(1), row.errors);
    }
}

TEST_F(HeaderFieldTest, kept_disposition_without_parameters_has_its_line_end) {
    EXPECT_EQ(parse("Content-Disposition: inline (c)\r\n\r\n"), "disposition=inline (c)\r\n|");
}

TEST_F(HeaderFieldTest, kept_tokens_may_hold_spaces_and_any_high_byte) {
    EXPECT_EQ(parse("Content-Type: text /plain; na me=\xFC\r\n\r\n"), "type=text /plain; na me=\xFC|");
    EXPECT_EQ(IsValidToken("a b"), 1);
    EXPECT_EQ(IsValidToken("a\tb"), 0);
    EXPECT_EQ(IsValidToken(""), 0);
    EXPECT_EQ(IsValidMsgId("<any thing>"), 1);
    EXPECT_EQ(IsValidMsgId("<a\x7F>"), 0);
}

TEST_F(HeaderFieldTest, kept_line_end_is_two_characters_of_a_description) {
    EXPECT_EQ(parse("Content-Description: abc\n\r\n"), "description=ab|");
}

// The character that stops the blanks behind an inner comment is not looked at.
TEST_F(HeaderFieldTest, kept_character_behind_an_inner_comment_is_passed) {
    EXPECT_EQ(parse("MIME-Version: 1.0 (a (b) \\) (c)\r\n\r\n"), "version=1.00|");
    EXPECT_EQ(parse("MIME-Version: 1.0 ((a)\"(b)\")\r\n\r\n"), "version=1.00|");
}

TEST_F(HeaderFieldTest, lenient_grammar) {
    set("Options", "StrictMimeParsing", "NO");
    const Row rows[] = {
        {"raw values", "Content-Type: a/b; n = \"x;y=\"\r\n\r\n", "type=a/b; n = \"x; y=\"|", {}},
        {"escaped CR",
         "Content-Type: a/b; n=x\\\r\n\r\n",
         "refused",
         {"\"content-type:\" field invalid. Missing parm separator."}},
        {"escaped separator", "Content-Type: a/b; n=x\\;y;m=1\r\n\r\n", "type=a/b; n=x\\;y; m=1|", {}},
        {"blank value ends the field",
         "Content-Type: a/b; c=\r\nContent-ID: <i>\r\n\r\n",
         "id=<i>|type=a/b; c=\r|",
         {}},
        {"junk behind the value", "Content-Type: a/b; c=d e\r\n\r\n", "type=a/b; c=d e|", {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(parse(row.block), row.stored);
        EXPECT_EQ(take_log(1), row.errors);
    }
}

TEST_F(HeaderFieldTest, kept_lenient_value_may_begin_with_its_end) {
    set("Options", "StrictMimeParsing", "NO");
    EXPECT_EQ(parse("Content-Type: a/b; n=;b\r\n\r\n"), "type=a/b; n=;b|");
}

TEST_F(HeaderFieldTest, blank_values_are_a_setting_of_content_type) {
    set("Options", "AcceptBlankValueInContentTypeParm", "yes");
    EXPECT_EQ(parse("Content-Type: text/plain; charset=; a=b\r\n\r\n"), "type=text/plain; charset=; a=b|");
    EXPECT_EQ(parse("Content-Disposition: a; b=\r\n\r\n"), "refused");
    EXPECT_EQ(take_log(1).size(), 1u);
}

// The buffer's claim decides: n=, both quotes and the value are 32,767 characters at most.
TEST_F(HeaderFieldTest, quoted_values_have_a_largest_size) {
    const auto folded = [](std::size_t length) {
        std::string block = "Content-Type: a/b; n=\"";
        for (; length > 500; length -= 500) block += std::string(500, 'x') + "\r\n ";
        return block + std::string(length, 'x') + "\"\r\n\r\n";
    };
    std::size_t largest = 32750;
    while (parse(folded(largest + 1)) != "refused") ++largest;
    EXPECT_EQ(take_log(1).back(), "Quoted value too big.");
    EXPECT_EQ(largest + 4, 32767u);
}

TEST_F(HeaderFieldTest, traces_and_complaints_at_level_six) {
    parse("Content-Type: text/plain; charset=x\r\nContent-Type: text\r\nContent-Disposition:\r\n\r\n");
    EXPECT_THAT(take_log(6), ElementsAre("Found text/plain", "charset=x",
                                         "\"content-type:\" field invalid. Defaulting to application/octet-stream.",
                                         "\"content-disposition:\" field invalid."));
    parse("Content-Transfer-Encoding: (c)\r\n\r\n");
    EXPECT_THAT(take_log(6), ElementsAre("\"content-transfer-encoding:\" field invalid."));
    for (const char* field : {"MIME-Version: 1.0 x", "Content-ID: <i> x", "Content-Type: a/b (x",
                              "Content-Disposition: a; b=c (x", "Content-Transfer-Encoding: 7bit x"}) {
        EXPECT_EQ(parse(std::string(field) + "\r\nSubject: x\r\n\r\n"), "refused");
        const std::string name = std::string(field).substr(0, std::string(field).find(':') + 1);
        EXPECT_EQ(take_log(6).back(), "\"" + ascii::lower(name) + kContinuation);
    }
}

// The obvious way to pass comments, which a hostile sender could drive into the ground.
char* eat_recursively(VEL_FILE* file, char* p) {
    if (!p || !*p) return nullptr;
    for (;;) {
        while (is_blank(*p)) ++p;
        if (at_line_end(p)) {
            char* line = ReadNextHeaderLine(file);
            if (!line) return nullptr;
            if (is_blank(*line)) {
                p = line;
                continue;
            }
            SetFilePos(file, GetFilePos(file) - static_cast<int>(std::strlen(line)));
            std::strcpy(file->line, "\r\n");
            return file->line;
        }
        if (*p != '(') return p;
        for (++p; *p != ')';) {
            if (*p == '\\' && at_line_end(p + 1)) {
                p += 3;
            } else if (*p == '\\' && p[1]) {
                p += 2;
            } else if (*p == '(') {
                char* r = eat_recursively(file, p);
                if (!r) return nullptr;
                p = r;
                if (*r == ')') break;
                if (*r) ++p;
            } else if (*p) {
                ++p;
            } else {
                p = ReadNextHeaderLine(file);
                if (!p || !is_blank(*p)) return nullptr;
                ++p;
            }
        }
        ++p;
    }
}

TEST_F(HeaderFieldTest, comments_agree_with_the_recursive_way) {
    Random random(7);
    constexpr std::string_view kPieces[] = {"(", ")", "\\", "a", " ", "\r\n", "\r\n ", "\t", "(", ")", ";"};
    for (int round = 0; round < 4000; ++round) {
        std::string text;
        for (uint32_t i = random.below(14) + 1; i > 0; --i) text += kPieces[random.below(std::size(kPieces))];
        const std::string path = file("c", text + "\r\nnext\r\n");
        const auto outcome = [&](char* (*eat)(VEL_FILE*, char*)) {
            VEL_FILE* in = FileOpen(path.c_str(), 1);
            char* line = nullptr;
            GetLine(in, &line);
            const char* at = eat(in, line);
            const std::string result = (at ? at : "(null)") + std::string("@") + std::to_string(GetFilePos(in));
            FileClose(in);
            return result;
        };
        ASSERT_EQ(outcome(EatCommentsAndSpace), outcome(eat_recursively)) << testing::PrintToString(text);
    }
}

}  // namespace
}  // namespace vel::test
