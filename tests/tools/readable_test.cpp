// Texts of a message as people read them: encoded words, charsets, bodies for a terminal.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tools/message/address_list.h"
#include "tools/message/address_text.h"
#include "tools/text/charset.h"
#include "tools/text/charset_names.h"
#include "tools/text/plain_text.h"
#include "tools/text/readable.h"
#include "tools/text/text_forms.h"
#include "tools/text/utf8.h"

namespace vel::command {
namespace {

struct Case {
    std::string given, expected;
};

TEST(Readable, ResolvesEncodedWords) {
    const std::vector<Case> cases{
        {"", ""},
        {"plain =? text ?= =?x?", "plain =? text ?= =?x?"},
        {"Gr\xc3\xbc\xc3\x9f", "Gr\xc3\xbc\xc3\x9f"},
        {"=?ISO-8859-1?q?Andr=E9_B=F6?= <a@b>", "Andr\xc3\xa9 B\xc3\xb6 <a@b>"},
        {"=?utf-8*de?B?R3LDvMOf?=", "Gr\xc3\xbc\xc3\x9f"},
        // Blanks go between two words only; a character cut in two between them comes together.
        {"a =?utf-8?q?b?= \t =?UTF-8?Q?c?= d =?utf-8?q?e?=", "a bc d e"},
        {"=?utf-8?q?=C3?= =?utf-8?b?vA==?=", "\xc3\xbc"},
        {"=?iso-8859-1?q?=E9?= =?utf-8?q?=C3=A9?=", "\xc3\xa9\xc3\xa9"},
        {"=?iso-2022-jp?B?GyRCRnwbKEI=?=\t=?iso-2022-jp?B?GyRCS1wbKEI=?=", "\xe6\x97\xa5\xe6\x9c\xac"},
        // Taken though it stands where it should not, or is not quite what it should be.
        {"x=?utf-8?q?a b?=y\"=?utf-8?q?c?=\"", "xa by\"c\""},
        {"=?utf-8?q?what?\?= =?utf-8?q?=?= =?utf-8?q?=4?= =?utf-8?q?=zz?=", "what?==4=zz"},
        {"=?utf-8?b?YQ=?= =?utf-8?b?YQ==Yg==?= =?utf-8?b?YWI?=", "aabab"},
        {"=?=?utf-8?q?a?=", "=?a"},
        // No words.
        {"=?utf-8?b?a*b?= =??q?a?= =?utf-8?x?a?= =?u 8?q?a?=", "=?utf-8?b?a*b?= =??q?a?= =?utf-8?x?a?= =?u 8?q?a?="},
        // Not converted: as it stands, all of it.
        {"=?utf-8?q?a?= =?x-klingon?q?b?=", "=?utf-8?q?a?= =?x-klingon?q?b?= (not converted)"},
        {"=?utf-8?q?=FF?=", "=?utf-8?q?=FF?= (not converted)"},
        {"=?unknown-8bit?q?=E9?=", "=?unknown-8bit?q?=E9?= (not converted)"},
        {"caf\xe9 =?utf-8?q?a?=", "caf\\xe9 =?utf-8?q?a?= (not converted)"},
        // Shown, not obeyed.
        {"=?utf-8?q?=1B[2J=0A=E2=80=AE?=", "\\x1b[2J\\n\\u202e"},
    };
    for (const Case& c : cases) EXPECT_EQ(shown(readable(c.given)), c.expected) << c.given;
}

TEST(Readable, TakesTimeInProportion) {
    for (const char* const piece : {"=?", "=?u?q?", "=?u?b?", "=?u?b?A", "=?utf-8?q?=C3?= ", "=?gb2312?b?xOM=?= ",
                                    "=?big5?q?a?= =?koi8-r?q?a?= =?euc-jp?q?a?= ", "\xff"}) {
        std::string text;
        while (text.size() < 1000000) text += piece;
        EXPECT_FALSE(readable(text).text.empty()) << "a quadratic one runs into the time limit";
    }
}

TEST(Charset, GoesByTheNamesThatMailUses) {
    const std::vector<std::pair<std::string, Case>> rows{
        {"ISO_8859-1:1987", {"\xe9", "\xc3\xa9"}},
        {"iso8859-15", {"\xa4", "\xe2\x82\xac"}},
        {"x-cp1252", {"\x80", "\xe2\x82\xac"}},
        {"Windows-1251", {"\xd4", "\xd0\xa4"}},
        {"koi8_r", {"\xe6", "\xd0\xa4"}},
        {"gb2312", {"\xc4\xe3", "\xe4\xbd\xa0"}},
        {"ks_c_5601-1987", {"\xb0\xa1", "\xea\xb0\x80"}},
        {"x-sjis", {"\x93\xfa", "\xe6\x97\xa5"}},
        {"BIG5", {"\xa4\xa4", "\xe4\xb8\xad"}},
        {"utf-7", {"+AOk-", "\xc3\xa9"}},
        {"windows-1255", {"\xe0", "\xd7\x90"}},  // its converter holds the last character back
        {"us-ascii", {"a", "a"}},
    };
    for (const auto& [charset, text] : rows) {
        EXPECT_EQ(to_utf8(text.given, charset), text.expected) << charset;
        Utf8Converter converter(charset);
        std::string in_pieces;
        for (const char& c : text.given) converter.more({&c, 1}, in_pieces);
        converter.finish(in_pieces);
        EXPECT_EQ(in_pieces, text.expected) << charset;
    }
    for (const char* const hostile : {"utf-8//TRANSLIT", "../../tmp/evil", "iso-8859-12", "cp", "ibm1364", "WCHAR_T"}) {
        EXPECT_EQ(known_charset(hostile), nullptr) << hostile;
    }
    EXPECT_EQ(known_charset(std::string(1000000, 'x')), nullptr);
}

TEST(Charset, PassesWhatIsNoneOfIt) {
    std::string text;
    Utf8Converter converter("euc-jp");
    converter.more("a\xff\xc6", text);
    converter.more("\xfc\xc6", text);
    converter.finish(text);
    EXPECT_EQ(text, "a\xff\xe6\x97\xa5\xc6");
}

TEST(PlainText, EndsItsLinesAndSteersNoTerminal) {
    const std::vector<Case> cases{
        {"", ""},
        {"a\r\nb\rc\n\td", "a\nb\nc\n\td\n"},
        {"\x1b[2J\x9b \\ \xc3\xbc\xe2\x80\xae.", "\\x1b[2J\\x9b \\ \xc3\xbc\\u202e.\n"},
        {"\xe2\x82", "\\xe2\\x82\n"},
        {"\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80\n"},
        {"\r\r\n", "\n\n"},
    };
    for (const Case& c : cases) {
        for (const std::size_t step : {std::size_t{1}, c.given.size() + 1}) {
            PlainText plain;
            std::string made;
            for (std::size_t i = 0; i < c.given.size(); i += step) plain.more(c.given.substr(i, step), made);
            plain.finish(made);
            EXPECT_EQ(made, c.expected) << "by " << step;
        }
    }
}

TEST(Readable, PutsAPhraseInQuotesThatWouldMislead) {
    const std::vector<Case> cases{
        {"=?utf-8?q?Lee=2C_Ann?= <a@b> (=?utf-8?q?x?=)", "\"Lee, Ann\" <a@b> (x)"},
        {"=?utf-8?q?boss=40bank_=3Cboss=40bank=3E?= <evil@b>", "\"boss@bank <boss@bank>\" <evil@b>"},
        {"\"=?utf-8?q?say_=22hi=22?=\" <a@b>", "\"say \\\"hi\\\"\" <a@b>"},
        {"=?utf-8?q?Ann?= =?utf-8?q?_Lee?= <a@b>", "Ann Lee <a@b>"},
        {"\"=?utf-8?q?Ann?=\" <a@b>", "\"Ann\" <a@b>"},
        {"=?x-klingon?q?Ann?= <a@b>", "=?x-klingon?q?Ann?= <a@b>"},
    };
    for (const Case& c : cases) {
        Recipient record;
        ASSERT_TRUE(AddressListReader(c.given).next(record.get()));
        EXPECT_EQ(readable_address(record.get()).text, c.expected);
    }
}

}  // namespace
}  // namespace vel::command
