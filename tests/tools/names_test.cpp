// Names and texts made from what a message says.
#include "tests/support/fixture.h"
#include "tools/message/parameters.h"
#include "tools/message/part_name.h"
#include "tools/text/safe_name.h"
#include "tools/text/text_forms.h"
#include "tools/text/utf8.h"

namespace vel::command {
namespace {

TEST(SafeName, LeavesNothingThatHarmsADirectory) {
    const std::string xs(300, 'x');
    std::string umlauts;
    for (int i = 0; i < 150; ++i) umlauts += "\xc3\xa4";
    const std::vector<std::pair<std::string, std::string>> rows{
        {"../../etc/passwd", "passwd"},
        {"C:\\Users\\me\\tax.xls", "tax.xls"},
        {"..", ""},
        {" . ", ""},
        {".bashrc", "bashrc"},
        {"-rf", "_rf"},
        {"~root", "_root"},
        {std::string("a\x1b[2J\r\n\0b.txt", 13), "a_[2J___b.txt"},
        {"what?*<me>:\"|.doc", "what___me____.doc"},
        {"CON", "_CON"},
        {"lpt1.prn", "_lpt1.prn"},
        {"com10.txt", "com10.txt"},
        {"trailing. . ", "trailing"},
        {"Gr\xc3\xbc\xdf.txt", "Gr\xc3\xbc_.txt"},
        {"evil\xe2\x80\xaegpj.exe", "evil_gpj.exe"},
        {xs + ".pdf", xs.substr(104) + ".pdf"},
        {"a." + xs, "a." + xs.substr(102)},
        {xs.substr(101) + "." + xs, xs.substr(101)},
        {umlauts + ".txt", umlauts.substr(104) + ".txt"},
        {"x" + umlauts, "x" + umlauts.substr(102)},
    };
    for (const auto& [given, expected] : rows) EXPECT_EQ(safe_name(given), expected) << visible(given);
    EXPECT_EQ(numbered("report.pdf", 2), "report-2.pdf");
    EXPECT_EQ(numbered("README", 12), "README-12");
}

// What the help tells a reader of the JSON to do.
std::string bytes_of(std::string_view text) {
    std::string bytes;
    for_each_character(text, [&](char32_t code, std::string_view encoded) {
        if (code >= 0xF780 && code <= 0xF7FF) {
            bytes += static_cast<char>(code - 0xF700);
        } else {
            bytes += encoded;
        }
    });
    return bytes;
}

TEST(JsonText, IsUtf8AndLosesNoByte) {
    std::string all;
    for (int byte = 1; byte < 256; ++byte) all += static_cast<char>(byte);
    const std::vector<std::string> texts{
        "plain",
        "Gr\xc3\xbc\xc3\x9f",                                           // UTF-8 stays
        "caf\xe9",                                                      // Latin-1
        "\xef\x9e\x80 and \xef\x9f\xbf",                                // the private characters themselves
        "\xc0\xaf \xed\xa0\x80 \xf4\x90\x80\x80 \xf8\x88\x80\x80\x80",  // overlong, surrogate, too high, five bytes
        "cut \xe2\x82",
        "\xf0\x9f\x93\x8e",
        all,
        all + all,
    };
    for (const std::string& text : texts) {
        const std::string shown = json_text(text);
        for_each_character(shown, [](char32_t code, std::string_view) { EXPECT_NE(code, kNotUtf8); });
        EXPECT_EQ(bytes_of(shown), text) << visible(text);
    }
    EXPECT_EQ(json_text("Gr\xc3\xbc\xc3\x9f"), "Gr\xc3\xbc\xc3\x9f");
    EXPECT_EQ(json_text("caf\xe9"), "caf\xef\x9f\xa9");
}

TEST(Visible, KeepsTextFromSteeringATerminal) {
    const std::pair<const char*, const char*> rows[] = {
        {"plain \xc3\xbc", "plain \xc3\xbc"}, {"\x1b]0;title\x07", "\\x1b]0;title\\x07"},
        {"a\r\n\tb", "a\\r\\n\\tb"},          {"\xc2\x9b_", "\\u009b_"},
        {"\xe2\x80\xae_", "\\u202e_"},        {"back\\slash \x7f\xff", "back\\\\slash \\x7f\\xff"}};
    for (const auto& [given, expected] : rows) EXPECT_EQ(visible(given), expected);
}

// A chain whose texts live as long as it does.
struct Chain {
    explicit Chain(std::vector<std::string> given) : texts(std::move(given)), nodes(texts.size()) {
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            nodes[i] = {texts[i].data(), i + 1 < nodes.size() ? &nodes[i + 1] : nullptr};
        }
    }
    std::vector<std::string> texts;
    std::vector<ms> nodes;
};

TEST(Parameter, ReadsPlainAndExtendedValues) {
    const std::vector<std::pair<std::string, std::string>> rows{
        // The parameters, and the value as it is shown.
        {"filename=\"two words.txt\"", "two words.txt"},
        {"x=1|FileName = plain.txt\r", "plain.txt"},
        {"filename=first|filename=second", "first"},
        {"filename=fallback|filename*=UTF-8''na%C3%AFve%20plan.txt", "na\xc3\xafve plan.txt"},
        {"filename*0=\"long \"|filename*1*=n%61me|filename*2=\".txt\"", "long name.txt"},
        {"filename*0*=us-ascii'en'a%2|filename*1=b|filename*3=lost", "a%2b"},
        {"filename*0*=iso-8859-1''%e9%|filename*1*=e9t%E9", "\xc3\xa9%e9t\xc3\xa9"},
        {"filename*0*=utf-8''%C3|filename*1*=%BC", "\xc3\xbc"},
        {"filename*=x-klingon''%E9", "\\xe9 (not converted)"},
        {"filename*0=\"=?utf-8?B?R3LD\"|filename*1=\"vMOf?=\"", "Gr\xc3\xbc\xc3\x9f"},
        {"filename=\"", "\""},
        {"filename", "none"},
    };
    for (const auto& [texts, expected] : rows) {
        const Chain chain(test::split(texts));
        EXPECT_EQ(shown(parameter(chain.nodes.data(), "filename").value_or(Readable{"none"})), expected);
    }
    EXPECT_FALSE(parameter(nullptr, "filename"));
}

TEST(PartName, PrefersTheDispositionAndFitsTheType) {
    const Chain disposition({"filename=\"\""}), type({"name=n.gif"});
    std::string true_name = "t.bin", image = "IMAGE", jpeg = "Jpeg", text = "text", odd = "x-odd";
    MimeMsg record{};
    EXPECT_FALSE(given_name(record));
    EXPECT_EQ(extension_of(record), ".txt");
    record.trueName = true_name.data();
    EXPECT_EQ(given_name(record), Readable{"t.bin"});
    record.contentTypeParams = const_cast<ms*>(type.nodes.data());
    record.contentDispositionParams = const_cast<ms*>(disposition.nodes.data());
    EXPECT_EQ(given_name(record), Readable{"n.gif"});
    record.contentType = image.data();
    record.contentSubtype = jpeg.data();
    EXPECT_EQ(extension_of(record), ".jpg");
    record.contentType = text.data();
    record.contentSubtype = odd.data();
    EXPECT_EQ(extension_of(record), ".txt");
}

}  // namespace
}  // namespace vel::command
