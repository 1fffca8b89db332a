#include "vel/words.h"

#include <cstdlib>

#include "codec/encoded_word_placing.h"
#include "tests/support/fixture.h"

namespace vel::test {
namespace {

std::string taken(char* text) {
    const std::string result = text ? text : "(null)";
    std::free(text);
    return result;
}

std::string repeated(std::string_view unit, std::size_t count) {
    std::string text;
    while (count-- > 0) text += unit;
    return text;
}

class Words : public VelTest {
  protected:
    struct Row {
        std::string_view text;
        std::string_view expected;
    };
    using Rows = std::initializer_list<Row>;
    using Call = char* (*)(const char*);

    static void gives(Call call, Rows rows) {
        for (const Row& row : rows) EXPECT_EQ(taken(call(exact(row.text).get())), row.expected) << row.text;
    }

    // The same for calls that take the charset, which is "u" in these tests.
    static void gives(char* (*call)(const char*, const char*), Rows rows) {
        for (const Row& row : rows) {
            EXPECT_EQ(taken(call(exact(row.text).get(), exact("u").get())), row.expected) << row.text;
        }
    }

    static std::string placed(int& column, const std::string& prefix, const std::string& text, WordMethod method) {
        const int number = method == WordMethod::q ? 1 : 0;
        return taken(prcoessEncodedWord(&column, exact(prefix).get(), exact(text).get(), number));
    }
};

TEST_F(Words, null_and_empty_texts) {
    for (const Call call :
         {rfc1522encoding, rfc1522encoding2, rfc1522encode, rfc1522decoding, rfc1522decoding_wmc, Get1522Charset}) {
        EXPECT_EQ(call(nullptr), nullptr);
    }
    for (const auto call : {rfc1522encoding_wmc, rfc1522encoding2_wmc, rfc1522encode_wmc}) {
        EXPECT_EQ(call(nullptr, "u"), nullptr);
        EXPECT_EQ(call("a", nullptr), nullptr);
        EXPECT_EQ(taken(call("", "u")), "");
    }
    for (const Call call : {rfc1522encoding, rfc1522encoding2, rfc1522encode}) EXPECT_EQ(taken(call("")), "");
    for (const Call call : {rfc1522decoding, rfc1522decoding_wmc}) EXPECT_EQ(call(""), nullptr);
    int column = 0;
    EXPECT_EQ(prcoessEncodedWord(nullptr, "p", "t", 0), nullptr);
    EXPECT_EQ(prcoessEncodedWord(&column, nullptr, "t", 0), nullptr);
    EXPECT_EQ(prcoessEncodedWord(&column, "p", nullptr, 0), nullptr);
}

TEST_F(Words, all_ascii) {
    for (const char* text : {"", "a~\x7F\t"}) EXPECT_EQ(IsStringAllAscii(text), 1);
    for (const char* text : {"\x80", "abcdefghijk\xFF", "\xE4 a"}) EXPECT_EQ(IsStringAllAscii(text), 0);
    EXPECT_EQ(IsStringAllAscii(nullptr), 1);
    for (const char* text : {"a (b) ", "\"a\" <b@c>, ", " ", "=?x?Q?a?="}) {
        EXPECT_EQ(taken(rfc1522encoding(text)), text);
        EXPECT_EQ(taken(rfc1522encoding_wmc(text, "u")), text);
        EXPECT_EQ(taken(rfc1522encode(text)), text);
        EXPECT_EQ(taken(rfc1522encode_wmc(text, "u")), text);
    }
}

// ---- Encoding

TEST_F(Words, runs_of_words_are_encoded) {
    gives(rfc1522encode,
          {
              {"Gr\xFC\xDF"
               "e an alle",
               "=?US-ASCII?Q?Gr=FC=DFe?= an alle"},
              {"\xE4 \xF6 x", "=?US-ASCII?Q?=E4=20=F6?= x"},
              {"a  \xE4", "a  =?US-ASCII?Q?=E4?="},
              {"\xE4  \xF6 \r\n", "=?US-ASCII?Q?=E4?=  =?US-ASCII?Q?=F6?="},
              {"\xE4  b ", "=?US-ASCII?Q?=E4?=  b"},
              {" \xE4", " =?US-ASCII?Q?=E4?="},
              {"a\t\xE4", "=?US-ASCII?Q?a=09=E4?="},
              {"\xE4=?()<>@,:;.[]\\\"\x01", "=?US-ASCII?Q?=E4=3D=3F=28=29=3C=3E=40=2C=3A=3B=2E=5B=5D=5C=22=01?="},
              {"\x80\xFF!#$%&'*+-/09AZ^_`az{|}~\x7F", "=?US-ASCII?Q?=80=FF!#$%&'*+-/09AZ^_`az{|}~\x7F?="},
          });
    gives(rfc1522encode_wmc, {
                                 {"\xE4", "=?u?B?5A==?="},
                                 {"\xE4\xF6", "=?u?B?5PY=?="},
                                 {"x \xE4 \xF6", "x =?u?B?5CD2?="},
                                 {"\xFF\xFE\xFD\xFC", "=?u?B?//79/A==?="},
                             });
}

TEST_F(Words, settings_choose) {
    set("Gateway", "LocalCharSet", "ISO-8859-1");
    set("Options", "RFC1522codingMethod", "quoted-PRINTABLE");
    EXPECT_EQ(taken(rfc1522encode("\xE4")), "=?ISO-8859-1?Q?=E4?=");
    for (const char* method : {"base64", "", "Q"}) {
        set("Options", "RFC1522codingMethod", method);
        EXPECT_EQ(taken(rfc1522encode("\xE4")), "=?ISO-8859-1?B?5A==?=");
    }
    set("Options", "EnableRFC1522Encoding", "no");
    EXPECT_EQ(taken(rfc1522encoding2("\xE4 (a) ")), "\xE4 (a) ");
    EXPECT_EQ(taken(rfc1522encoding("\xE4  <a@b>")), "\xE4 <a@b>");
    EXPECT_EQ(taken(rfc1522encode("\xE4")), "=?ISO-8859-1?B?5A==?=");
    EXPECT_EQ(taken(rfc1522encoding2_wmc("\xE4", "u")), "=?u?B?5A==?=");
    set("Options", "EnableRFC1522Encoding", "FALSE");
    EXPECT_EQ(taken(rfc1522encoding2("\xE4")), "=?ISO-8859-1?B?5A==?=");
}

TEST_F(Words, kept_two_blanks_before_a_comment) {
    gives(rfc1522encoding2, {
                                {"a (b)  ", "a  (b)"},
                                {"a(b)(c", "a (b)(c"},
                                {"a (b) c ", "a  (b) c"},
                                {"a (b", "a (b"},
                                {"   ", " "},
                                {"(a (b) \xE4)", " (a (b) =?US-ASCII?Q?=E4=29?="},
                                {"\xE4 (\xF6 )\xFC", "=?US-ASCII?Q?=E4?= (=?US-ASCII?Q?=F6?=)=?US-ASCII?Q?=FC?="},
                                {"a) (\xE4", "a) =?US-ASCII?Q?=28=E4?="},
                            });
    gives(rfc1522encoding2_wmc, {
                                    {"a (b)  ", "a (b)"},
                                    {"\xE4 (\xF6) b", "=?u?B?5A==?=(=?u?B?9g==?=) b"},
                                    {"\xE4 (b) ", "=?u?B?5A==?=(b)"},
                                });
}

TEST_F(Words, addresses_are_encoded_by_their_parts) {
    set("Gateway", "LocalCharSet", "u");
    gives(rfc1522encoding, {
                               {"J\xFC  R <j@x.de>", "=?u?Q?J=FC?= R <j@x.de>"},
                               {"<j@x.de> (\xE4)", "j@x.de (=?u?Q?=E4?=)"},
                               {"J <j@x.de> (\xE4 b)", "J <j@x.de> (=?u?Q?=E4?= b)"},
                               {"J\xFC  <@a,@b:j@x.de>", "=?u?Q?J=FC?= <@a,@b:j@x.de>"},
                               {"\xFC <\"a (b)\"@x>", "=?u?Q?=FC?= <\"a (b)\"@x>"},
                               {"J <j@\xFC.de>", "J <=?u?Q?j=40=FC=2Ede?=>"},
                               {" J\xFC <j@x>\r\n ", "=?u?Q?J=FC?= <j@x>"},
                               {"\"(x)\" <\"a (b)\"@\xFC>", "\" (x)\" <\"a  (b)=?u?Q?=22=40=FC?=>"},
                               {"\"\xFC a", "=?u?Q?=22=FC?= a"},
                               {"J\xFC <j@x>, k@x", "=?u?Q?J=FC?= <j@x>, k@x"},
                           });
    EXPECT_EQ(taken(rfc1522encoding_wmc("\xE4 <a@b> (\xF6)", "v")), "=?v?B?5A==?= <a@b> (=?v?B?9g==?=)");
    EXPECT_EQ(taken(rfc1522encoding_wmc("\xE4, (a) b", "v")), "=?v?B?5Cw=?=(a) b");
}

TEST_F(Words, kept_only_an_address_from_end_to_end_is_one) {
    set("Gateway", "LocalCharSet", "u");
    gives(rfc1522encoding, {
                               {"Gr\xFC\xDF, an alle", "=?u?Q?Gr=FC=DF=2C?= an alle"},
                               {"Gr\xFC\xDF, ", "=?u?Q?Gr=FC=DF=2C?="},
                               {"\"J\xFC\" <j@x>,", "=?u?Q?=22J=FC=22?= <j@x>,"},
                               {"\xFC@x;", "=?u?Q?=FC=40x=3B?="},
                               {"an alle, \xE4", "an alle, =?u?Q?=E4?="},
                               {"g: \xE4@b;", "g: =?u?Q?=E4=40b=3B?="},
                               {"g: J <\xE4@b>;", "g: J =?u?Q?=3C=E4=40b=3E=3B?="},
                               {"g: \xE4@b, (c", "g: =?u?Q?=E4=40b=2C?= (c"},
                           });
}

TEST_F(Words, kept_a_value_that_parses_as_an_address_is_written_as_one) {
    set("Gateway", "LocalCharSet", "u");
    gives(rfc1522encoding, {
                               {"(note) \xE4", "=?u?Q?=E4?= (note)"},
                               {"\xE4 (a) (b)", "=?u?Q?=E4?= (b)"},
                               {"<\xE4>", "=?u?Q?=E4?="},
                           });
}

TEST_F(Words, kept_encoded_words_stand_in_a_quoted_phrase) {
    set("Gateway", "LocalCharSet", "u");
    gives(rfc1522encoding, {
                               {"J\xFC \"b\" <j@x>", "=?u?Q?J=FC?= \"b\" <j@x>"},
                               {"\"b\" J\xFC <j@x>", "\"b\" =?u?Q?J=FC?= <j@x>"},
                               {"\"J\xFC, R\" <j@x>", "\"=?u?Q?J=FC=2C?= R\" <j@x>"},
                               {"\"\" <\xFC@x>", "\"\" <=?u?Q?=FC=40x?=>"},
                               {"\"a\" \xFC \"b\" <j@x>", "\"a\" =?u?Q?=FC?= \"b\" <j@x>"},
                           });
}

TEST_F(Words, kept_words_are_placed_by_columns) {
    const std::string p(20, 'p');
    const std::string none, fold = "\r\n ";
    struct {
        const char* name;
        int column;
        std::string prefix;
        WordMethod method;
        std::string text;
        std::string expected;
        int after;
    } const rows[] = {
        {"fits", 10, p, WordMethod::b, std::string(41, 'x'), p + std::string(41, 'x') + "?= ", 74},
        {"fills the room", 10, p, WordMethod::b, std::string(44, 'x'), p + std::string(44, 'x') + "?=" + fold, 3},
        {"is cut by quanta", 12, p, WordMethod::b, std::string(44, 'x'),
         p + std::string(40, 'x') + "?=" + fold + p + "xxxx?= ", 30},
        {"on a new line", 75, p, WordMethod::q, "x", fold + p + "x?= ", 27},
        {"on the last column", 74, "p", WordMethod::q, "x", "p?=" + fold + "px?= ", 8},
        {"no text", 60, p, WordMethod::q, "", fold + p + "?= ", 26},
        {"no room below a quantum", 56, p, WordMethod::b, "xxxx", p + "?=" + fold + p + "xxxx?= ", 30},
        {"little less than none", 58, p, WordMethod::b, "xxxx", p + "?=" + fold + p + "xxxx?= ", 30},
        {"less than none", 59, p, WordMethod::b, "xxxx", fold + p + "xxxx?= ", 30},
        {"less than none for Q", 56, p, WordMethod::q, "=E4", fold + p + "=E4?= ", 29},
        {"a digit would not fit", 50, p, WordMethod::q, "abc=E4", p + "abc?=" + fold + p + "=E4?= ", 29},
        {"an escape would just fit", 50, p, WordMethod::q, "ab=E4f", p + "ab?=" + fold + p + "=E4f?= ", 30},
        {"cut behind =", 50, p, WordMethod::q, "abcd=E4", p + "abcd=?=" + fold + p + "E4?= ", 28},
        {"room for one", 53, p, WordMethod::q, "ab=E4", p + "ab?=" + fold + p + "=E4?= ", 29},
        {"a prefix too long", 0, std::string(80, 'p'), WordMethod::b,
         "xxxxyy==", fold + std::string(80, 'p') + "xxxx?=" + fold + std::string(80, 'p') + "yy==?=" + fold, 3},
        {"a prefix too long for Q", 3, std::string(71, 'p'), WordMethod::q, "a=E4",
         std::string(71, 'p') + "a?=" + fold + std::string(71, 'p') + "=E4?=" + fold, 3},
        {"columns at their limits", INT32_MIN, p, WordMethod::q, "=E4", p + "=E4?= ", INT32_MIN + 26},
        {"and at the other", INT32_MAX, p, WordMethod::q, "=E4", fold + p + "=E4?= ", 29},
    };
    for (const auto& row : rows) {
        int column = row.column;
        EXPECT_EQ(placed(column, row.prefix, row.text, row.method), row.expected) << row.name;
        EXPECT_EQ(column, row.after) << row.name;
    }
    EXPECT_EQ(taken(rfc1522encode((std::string(80, 'a') + " \xE4 b").c_str())),
              std::string(80, 'a') + " \r\n =?US-ASCII?Q?=E4?= b")
        << "a long word of ASCII is not folded";
    const std::string fits(60, 'a'), fills(61, 'a');
    gives(rfc1522encode_wmc, {
                                 {fits + " \xE4 b", fits + " =?u?B?5A==?= b"},
                                 {fills + " \xE4 b", fills + " =?u?B?5A==?=\r\n b"},
                             });
}

// ---- Decoding

TEST_F(Words, words_are_decoded) {
    gives(rfc1522decoding_wmc, {
                                   {"plain", "plain"},         {"a =?x?Q?=e4=F6?= b", "a \xE4\xF6 b"},
                                   {"=?x?q?a=3f?=", "a?"},     {"=?x?B?QUJD?=", "ABC"},
                                   {"=?x?b?QUI=?=", "AB"},     {"=?x?b?QQ==QQ==?=", "AA"},
                                   {"(=?x?B?QQ?=)", "(A)"},    {"=?x?B?QUJDQUI?=", "ABCAB"},
                                   {"=?x?B?R?=.", "."},        {"=?x?B?\?=.", "."},
                                   {"=?x?Q?\?=.", "."},        {"=?\?Q?a?=", "a"},
                                   {"=?Q?a?=", "=?Q?a?="},     {"=?x?Q?=", "=?x?Q?="},
                                   {"=?x?Q?a=?=b", "a=b"},     {"=?x?Q?a=4?=b", "a=4b"},
                                   {"=?x?Q?a", "=?x?Q?a"},     {"=?x?Q?a?= =?x?B?QUI", "a =?x?B?QUI"},
                                   {"=?x?y?a?=", "=?x?y?a?="}, {"=?x?b?QQ?==?x?b?QQ?==?", "AA=?"},
                               });
}

TEST_F(Words, kept_underscores_and_blanks_between_words_stay) {
    gives(rfc1522decoding, {
                               {"=?US-ASCII?Q?a_b?=", "a_b"},
                               {"=?US-ASCII?Q?a?= =?US-ASCII?Q?b?=", "a b"},
                               {"=?US-ASCII?Q?a?=\r\n =?US-ASCII?Q?b?= \t", "a\r\n b \t"},
                           });
}

TEST_F(Words, kept_a_prefix_names_the_local_charset) {
    set("Gateway", "LocalCharSet", "ISO-8859-1");
    const Rows rows = {
        {"=?iso-8859-1?Q?=41?=", "A"},
        {"=?ISO?B?QQ==?=", "A"},
        {"=?\?Q?=41?=", "A"},
        {"=?ISO-8859-15?Q?=41?= =?ISO?Q?b?=", "=?ISO-8859-15?Q?=41?= b"},
        {"a=?UTF-8?q?=41?=b", "a=?UTF-8?q?=41?=b"},
    };
    gives(rfc1522decoding, rows);
    set("Options", "Force1522Decoding", "TRUE");
    gives(rfc1522decoding, rows);
    set("Options", "Force1522Decoding", "yes");
    EXPECT_EQ(taken(rfc1522decoding("a=?UTF-8?q?=41?=b")), "aAb");
}

TEST_F(Words, kept_the_best_marker_counts_wherever_it_stands) {
    gives(rfc1522decoding_wmc, {
                                   {"=?x?B?QQ==?= =?x?Q?b?=", "b"},
                                   {"=?x?B?QQ==?= =?x?q?b?= =?x?b?QQ==?=", "b A"},
                                   {"=?x?b?QQ==?= =?x?B?QQ==?= =?x?b?QQ==?=", "A A"},
                                   {"=?x?B?QQ==?= ?Q?", "=?x?B?QQ==?= ?Q?"},
                                   {"=?x?q?Q?=", "=?x?q?Q?="},
                               });
    set("Gateway", "LocalCharSet", "x");
    EXPECT_EQ(taken(rfc1522decoding("=?x?B?QQ==?= =?x?Q?b?= =?x?B?QQ==?=")), "=?x?B?QQ==?= =?x?Q?b?= A")
        << "the charset is all before the marker";
}

TEST_F(Words, kept_nothing_of_a_word_is_checked) {
    gives(rfc1522decoding_wmc, {
                                   {"=?x?Q?=4G==4=\xE4"
                                    "1?=",
                                    "\xFF\xFF\xFF"},
                                   {"=?x?Q?a b\xE4?=", "a b\xE4"},
                                   {"=?x?B?****?=", "\xFF\xFF\xFF"},
                                   {"=?x?B?Q*AB?=", "C\xF0\x01"},
                                   {"=?x?B?QQ*B?=", "A\x0F\xC1"},
                                   {"=?x?B?QUJ\xE4?=", "AB\xFF"},
                                   {"=?x?B?=QUJQUJD?=", "ABC"},
                                   {"=?x?B?Q=UJ?=", ""},
                                   {"=?x?B?QU=J?=", "A"},
                               });
}

TEST_F(Words, kept_nul_ends_a_word) {
    gives(rfc1522decoding_wmc, {
                                   {"=?x?Q?a=00b?=c", "ac"},
                                   {"=?x?B?QQBB?= =?x?B?QQBB?=", "A A"},
                               });
}

TEST_F(Words, kept_the_last_kind_of_marker_names_the_charset) {
    gives(Get1522Charset, {
                              {"a =?utf-8?Q?a?=", "utf-8"},
                              {"=?\?b?QQ==?=", ""},
                              {"=?x?Q?a?= =?y?B?b?=", "x?Q?a?= =?y"},
                              {"=?x?b?QQ==?= =?y?Q?b?=", "x"},
                              {"=?x?Q?a?= =?y?Q?b?=", "x"},
                              {"=?x?Q?B?=", "x"},
                              {"=?x?Q?a?= ?q?", "(null)"},
                              {"=?x?Q?a", "(null)"},
                              {"=?x?Q?=", "(null)"},
                              {"=?x?y?a?=", "(null)"},
                              {"x?Q?a?=", "(null)"},
                              {"", "(null)"},
                          });
}

// What would take minutes if it were searched again for each word.
TEST_F(Words, long_values_take_time_in_proportion) {
    constexpr std::size_t kSize = 1 << 20;
    for (const std::string unit : {"=?", "=?x?Q?", "=?x?b?", "?Q?q?B?b", "=?x?b?QQ==?= ", "=?x?q?=?= ", "=", "(",
                                   "\xE4 ", "a ", "\xE4,", "(\xE4)", "\xE4 a "}) {
        const std::string text = repeated(unit, kSize / unit.size());
        EXPECT_NE(taken(rfc1522decoding_wmc(text.c_str())), "(null)") << unit;
        EXPECT_NE(taken(rfc1522encoding(text.c_str())), "(null)") << unit;
        taken(Get1522Charset(text.c_str()));
    }
}

}  // namespace
}  // namespace vel::test
