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
    ~HeaderFieldTest() override { FreeMsgTree(&read_); }

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
    MimeMsg* read_ = AllocateNewMsg("unused");
};

struct Row {
    std::string fields;  // LF standing for CR LF; a blank line follows
    std::string stored;
    std::string error;  // the line at level 1
};

class FieldTableTest : public HeaderFieldTest {
  protected:
    void check(const Row& row) {
        SCOPED_TRACE(row.fields);
        EXPECT_EQ(parse(crlf(row.fields + "\n\n")), row.stored);
        const std::vector<std::string> errors = take_log(1);
        EXPECT_EQ(errors, row.error.empty() ? std::vector<std::string>{} : std::vector{row.error});
    }
};

TEST_F(FieldTableTest, strict_grammar) {
    const Row rows[] = {
        {"Subject: x\nX-Content-Type: a/b\nContent-Type : a/b", "", ""},
        {"mime-VERSION: 1.0 (made \\) (by hand))\nCONTENT-ID: <a@b>\nContent-Description: \t two words \n"
         "content-type: Text/Plain\nContent-Transfer-Encoding: BASE64 (really)",
         "version=1.00|id=<a@b>|description=two words |type=Text/Plain|encoding=BASE64|", ""},
        {"MIME-Version: nothing", "refused", "\"mime-version:\" field invalid."},
        {"MIME-Version: 1.0 x", "refused", ""},
        {"Content-ID: a@b", "refused", "\"content-id:\" field invalid."},
        {"Content-ID:\n\t<a@b>\n (c)", "id=<a@b>|", ""},
        {"Content-Description:  ", "", ""},
        {"Content-Description: a\n b", "description=a|", ""},
        {"Content-Type: text/plain; charset=us-ascii (plain); format=flowed;; ; x=\"a;b\"",
         "type=text/plain; charset=us-ascii; format=flowed; x=\"a;b\"|", ""},
        {"Content-Type: multipart/mixed;\n\tboundary=\"a b\"\nContent-ID: <i>",
         "id=<i>|type=multipart/mixed; boundary=\"a b\"|", ""},
        {"Content-Type: a/b;\n \n\t\n c=d", "type=a/b; c=d|", ""},
        {"Content-Type: a/b; n=\"x\\\"y\\\\z\\q\"", "type=a/b; n=\"x\"y\\z\\q\"|", ""},
        {"Content-Type: a/b; n=\"x\\\n y\"", "type=a/b; n=\"x\r\ny\"|", ""},
        {"Content-Type: a/b; n = \"x y\"", "type=a/b; n=\"x y\"|", ""},
        {"Content-Type: text/plain(c); a=b", "type=application/octet-stream|", ""},
        {"Content-Type: text/" + std::string(260, 'x'), "type=application/octet-stream|", ""},
        {"Content-Type: a/b; c=d\nContent-Type: text", "type=application/octet-stream|", ""},
        {"Content-Type: /plain", "refused", "\"content-type:\" field invalid. Misplaced slash."},
        {"Content-Type: text/ ;a=b", "refused", "\"content-type:\" field invalid. Missing subtype."},
        {"Content-Type: text/plain c=x", "refused", "\"content-type:\" field invalid. Missing parm separator."},
        {"Content-Type: text/plain; charset=", "refused", "Invalid parm in \"content-type:\" header: charset=\r\n"},
        {"Content-Type: a/b; n<n=0123456789012345678", "refused",
         "Invalid parm in \"content-type:\" header: n<n=0123456789012345"},
        {"Content-Type: a/b; n=\"x\nSubject: y", "refused", "Missing quote in \"content-type:\" parms."},
        {"Content-Disposition: attachment; filename=\"a b\"; size=3",
         "disposition=attachment; filename=\"a b\"; size=3|", ""},
        {"Content-Disposition: a; filename=", "refused",
         "Invalid parm in \"content-disposition:\" header: filename=\r\n"},
        {"Content-Transfer-Encoding: a/b", "refused", "\"content-transfer-encoding:\" field invalid."},
        {"Content-Transfer-Encoding: (c)", "refused", ""},
    };
    for (const Row& row : rows) check(row);
    EXPECT_EQ(parse("Content-Type: a/b; n=\"x\r\n"), "refused");
    EXPECT_THAT(take_log(1),
                ElementsAre("\"content-type:\" field invalid. Premature end of file, or file read error."));
}

TEST_F(FieldTableTest, lenient_grammar) {
    set("Options", "StrictMimeParsing", "NO");
    const Row rows[] = {
        {"Content-Type: a/b; n = \"x;y=\"", "type=a/b; n = \"x; y=\"|", ""},
        {"Content-Type: a/b; n=x\\", "refused", "\"content-type:\" field invalid. Missing parm separator."},
        {"Content-Type: a/b; n=x\\;y;m=1", "type=a/b; n=x\\;y; m=1|", ""},
        {"Content-Type: a/b; c=\nContent-ID: <i>", "id=<i>|type=a/b; c=\r|", ""},
        {"Content-Type: a/b; c=d e", "type=a/b; c=d e|", ""},
    };
    for (const Row& row : rows) check(row);
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

TEST_F(HeaderFieldTest, kept_disposition_without_parameters_has_its_line_end) {
    EXPECT_EQ(parse("Content-Disposition: inline (c)\r\n\r\n"), "disposition=inline (c)\r\n|");
}

// The character that stops the blanks behind an inner comment is not looked at.
TEST_F(HeaderFieldTest, kept_character_behind_an_inner_comment_is_passed) {
    EXPECT_EQ(parse("MIME-Version: 1.0 (a (b) \\) (c)\r\n\r\n"), "version=1.00|");
    EXPECT_EQ(parse("MIME-Version: 1.0 ((a)\"(b)\")\r\n\r\n"), "version=1.00|");
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
    for (const std::string name : {"mime-version: 1.0", "content-id: <i>", "content-type: a/b;",
                                   "content-disposition: a;", "content-transfer-encoding: 7bit"}) {
        EXPECT_EQ(parse(name + (name.ends_with(';') ? " b=c (x\r\n" : " x\r\n") + "Subject: x\r\n\r\n"), "refused");
        EXPECT_EQ(take_log(6).back(),
                  "\"" + name.substr(0, name.find(':') + 1) + "\" field invalid. Invalid comment or continuation.");
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
