#include "vel/japanese.h"

#include <iconv.h>
#include <locale.h>
#include <sys/stat.h>

#include "codec/japanese_half_width.h"
#include "tests/codec/codec_calls.h"
#include "tests/codec/japanese_codecs.h"

namespace vel::test {
namespace {

using namespace std::string_literals;

struct Row {
    const char* what;
    std::string input, output;
};

// Whole, and in every size of pieces that a sequence can be cut into.
template <class Codec>
void converts(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        for (const std::size_t piece : {row.input.size() + 1, std::size_t{1}, std::size_t{2}, std::size_t{3}}) {
            EXPECT_EQ(fed_text<Codec>(row.input, piece), row.output) << row.what << ", pieces of " << piece;
        }
    }
}

// The C library's view; not there when its character sets are not installed.
class Converter {
  public:
    Converter(const char* from, const char* to) : converter_(::iconv_open(to, from)) {}
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() {
        if (is_there()) ::iconv_close(converter_);
    }
    bool is_there() const { return converter_ != reinterpret_cast<iconv_t>(-1); }

    // Empty for a text that does not convert.
    std::string operator()(std::string text) const {
        std::string result(8 * text.size() + 16, '\0');
        char* in = text.data();
        char* out = result.data();
        std::size_t in_left = text.size(), out_left = result.size();
        const auto failed = static_cast<std::size_t>(-1);
        const bool all = ::iconv(converter_, &in, &in_left, &out, &out_left) != failed;
        ::iconv(converter_, nullptr, nullptr, &out, &out_left);
        return all ? result.substr(0, result.size() - out_left) : "";
    }

  private:
    iconv_t converter_;
};

// Closers as RFC 1468 has them at the end of a text.
std::string closed_with_ascii(std::string jis) {
    for (std::size_t at = 0; (at = jis.find("\x1B(J", at)) != std::string::npos; ++at) jis[at + 2] = 'B';
    return jis;
}

class Japanese : public CodecTest {
  protected:
    static Call to_jis(const char* mark = nullptr) {
        return [=](int in, int out) { return ShiftJIS2JIS(in, out, mark); };
    }
    static Call to_sjis(int32_t count = INT32_MAX, int repair = 0) {
        return [=](int in, int out) { return JIS2ShiftJIS(in, count, out, repair); };
    }
    static std::string owned(char* text) {
        const std::string copy = text ? text : "(null)";
        std::free(text);
        return copy;
    }
};

// Unicode's compatibility mappings; the two sound marks apart, which combine there.
TEST_F(Japanese, half_width_katakana_are_those_of_the_c_library) {
    std::string katakana;
    for (int byte = 0xA1; byte < 0xDE; ++byte) katakana += static_cast<char>(byte);
    const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    ASSERT_TRUE(unicode);
    const locale_t before = ::uselocale(unicode);
    const Converter to_unicode("SHIFT_JIS", "UTF-8"), from_unicode("UTF-8", "ISO-2022-JP//TRANSLIT");
    if (!to_unicode.is_there() || !from_unicode.is_there()) GTEST_SKIP() << "no converter is installed";
    const std::string full = from_unicode(to_unicode(katakana));
    ::uselocale(before);
    ::freelocale(unicode);
    EXPECT_EQ(closed_with_ascii(fed_text<JisEncoder>(katakana, 1)), full);
    const std::string spacing_marks = "\xE3\x82\x9B\xE3\x82\x9C";
    EXPECT_EQ(closed_with_ascii(fed_text<JisEncoder>("\xDE\xDF", 1)), from_unicode(spacing_marks));
}

TEST_F(Japanese, characters_are_those_of_the_c_library) {
    const Converter to_jis("SHIFT_JIS", "ISO-2022-JP");
    if (!to_jis.is_there()) GTEST_SKIP() << "no converter is installed";
    int known = 0;
    for (int code = 0x8140; code <= 0xEFFC; ++code) {
        const std::string sjis = {static_cast<char>(code >> 8), static_cast<char>(code)};
        const std::string jis = to_jis(sjis);
        if (!jis.starts_with(kOpenDouble)) continue;
        ++known;
        ASSERT_EQ(closed_with_ascii(fed_text<JisEncoder>(sjis, 2)), jis) << code;
        ASSERT_EQ(fed_text<JisDecoder>(jis, jis.size()), sjis) << code;
    }
    EXPECT_EQ(known, 6879) << "the characters of JIS X 0208";
}

TEST_F(Japanese, single_characters) {
    uint8_t first = 0x88, second = 0x9F;
    sjis2jis(&first, &second);
    EXPECT_EQ((DoubleByte{first, second}), (DoubleByte{0x30, 0x21}));
    jis2sjis(&first, &second);
    EXPECT_EQ((DoubleByte{first, second}), (DoubleByte{0x88, 0x9F}));
    sjis2jis(nullptr, &second);
    jis2sjis(&first, nullptr);

    const int in = CreateFile(file("in", "\xB6\xDE...").c_str(), 1);
    struct {
        uint8_t katakana, next;
        DoubleByte wanted;
        int offset;  // from 2 on
    } const rows[] = {
        {0xB6, 0xDE, {0x83, 0x4B}, 2}, {0xB6, 'A', {0x83, 0x4A}, 1},  {0xB6, 0xDF, {0x83, 0x4A}, 1},
        {0xB5, 0xDE, {0x83, 0x49}, 1}, {0xC4, 0xDE, {0x83, 0x68}, 2}, {0xC5, 0xDE, {0x83, 0x69}, 1},
        {0xC9, 0xDE, {0x83, 0x6D}, 1}, {0xCA, 0xDE, {0x83, 0x6F}, 2}, {0xCA, 0xDF, {0x83, 0x70}, 2},
        {0xCE, 0xDE, {0x83, 0x7B}, 2}, {0xCE, 0xDF, {0x83, 0x7C}, 2}, {0xCF, 0xDE, {0x83, 0x7D}, 1},
        {0xB3, 0xDE, {0x83, 0x94}, 2}, {0xB3, 0xDF, {0x83, 0x45}, 1}, {0xDE, 0xDE, {0x81, 0x4A}, 1},
        {0xA1, 0, {0x81, 0x42}, 2},    {0xA0, 'A', {0xA0, 'A'}, 2},   {0xE0, 'A', {0xE0, 'A'}, 2},
    };
    for (const auto& row : rows) {
        SetFilePointer(in, 2, nullptr, SEEK_SET);
        first = row.katakana, second = row.next;
        half2full(in, row.next, &first, &second);
        EXPECT_EQ((DoubleByte{first, second}), row.wanted) << int{row.katakana} << ' ' << int{row.next};
        EXPECT_EQ(SetFilePointer(in, 0, nullptr, SEEK_CUR), row.offset) << int{row.katakana};
    }
    half2full(in, 'A', nullptr, &second);
    half2full(-1, 'A', &first, nullptr);
    CloseHandle(in);
}

TEST_F(Japanese, encodes) {
    converts<JisEncoder>({
        {"ASCII and NUL", "a\0~\r\n"s, "a\0~\r\n"s},
        {"two lines", "\x88\x9F\x82\xA0\r\n\x82\xA0", "\x1B$B0!$\"\x1B(J\r\n\x1B$B$\"\x1B(J"},
        {"a trail byte like a backslash", "x\x83\x5Cy", "x\x1B$B%=\x1B(Jy"},
        {"combined, not combined", "\xB6\xDE\xB6x", "\x1B$B%,%+\x1B(Jx"},
        {"katakana at the end", "a\xB6", "a\x1B$B%+\x1B(J"},
        {"katakana before a character", "\xB6\x88\x9F", "\x1B$B%+0!\x1B(J"},
        {"a lead byte and no trail byte", "a\x81 b\x81\xFD\x82\xA0", "a\x81 b\x81\xFD\x1B$B$\"\x1B(J"},
        {"bytes of no class", "a\x80\xA0\xF0\xFFz", "a\x80\xA0\xF0\xFFz"},
        {"a lone lead byte", "\x81", "\x81"},
        {"a lone lead byte at the end", "\x82\xA0\x81", "\x1B$B$\"\x1B(J\x81"},
    });
    converts<MarkingEncoder>({{"marks", "a\x80\x82\xA0\xFF\x82\xA0\x81 \xF0\xB6",
                               "a<?>\x1B$B$\"\x1B(J<?>\x1B$B$\"\x1B(J<?> <?>\x1B$B%+\x1B(J"}});
    for (const std::size_t length : {0U, 31U, 100'000U}) {
        const std::string mark(length, 'm');
        const std::string written = mark.empty() ? "\x80" : mark;
        EXPECT_EQ(run(to_jis(mark.c_str()), "a\x80z\x80z"), (Outcome{0, 5, "a" + written + "z" + written + "z"}));
    }
}

TEST_F(Japanese, kept_a_first_lead_byte_takes_any_byte) {
    converts<JisEncoder>({{"a blank", "\x81 \x81 ", "\x1B$B!\x01\x1B(J\x81 "}});
    converts<MarkingEncoder>({{"CR", "\x88\r\n", "\x1B$B/\xEE\x1B(J\n"}});
}

TEST_F(Japanese, kept_text_closes_with_jis_x_0201) {
    converts<JisEncoder>({{"the end", "\x88\x9F", "\x1B$B0!\x1B(J"}});
}

TEST_F(Japanese, kept_the_last_byte_is_never_marked) {
    converts<MarkingEncoder>(
        {{"no class", "a\xFF\xFF", "a<?>\xFF"}, {"a lead byte", "\xB6\x81", "\x1B$B%+\x1B(J\x81"}});
}

TEST_F(Japanese, kept_nul_behind_half_width_katakana_is_lost) {
    converts<JisEncoder>({{"NUL", "\xB6\0\0\xB6\0"s, "\x1B$B%+\x1B(J\0\x1B$B%+\x1B(J"s}});
}

TEST_F(Japanese, kept_pairs_are_computed_and_not_looked_up) {
    converts<JisDecoder>({{"blanks", "\x1B$B  \x1B(B", "\x80\x9E"}});
    converts<JisEncoder>({{"DEL", "\x81\x7F", "\x1B$B!`\x1B(J"}});
}

TEST_F(Japanese, decodes) {
    const std::vector<Row> rows = {
        {"every sequence", "\x1B$B0!\x1B(Jx\x1B$@0!\x1B(By", "\x88\x9Fx\x88\x9Fy"},
        {"line ends", "a\r\nb\nc", "a\r\nb\nc"},
        {"CR at the end", "a\r", "a\r\n"},
        {"NUL and bytes above 127", "\0\x82\xA0"s, "\0\x82\xA0"s},
        {"half a pair before line ends", "\x1B$B0\r\n0!X\n0!", "0\r\n\x88\x9FX\n\x88\x9F"},
        {"half a pair before sequences and the end", "\x1B$B0\x1B(J0!\x1B$B0\x1B$BX", "00!0X"},
        {"sequences cut by line ends", "a\x1B\r\nb\x1B$\nc\x1B(\r\nd\x1B", "a\r\nb\nc\r\nd"},
        {"a line end behind ESC and another byte", "\x1B$B\x1BN\r\n0!", "\r\n0!"},
    };
    converts<JisDecoder>(rows);
    converts<RepairingDecoder>(rows);
}

TEST_F(Japanese, kept_double_byte_text_goes_on_behind_a_line_end) {
    converts<JisDecoder>({{"two lines", "\x1B$B0!\r\n0!\x1B(B", "\x88\x9F\r\n\x88\x9F"}});
}

TEST_F(Japanese, kept_unknown_escape_sequences_are_dropped) {
    converts<JisDecoder>({
        {"the mode stays", "\x1B$B\x1B$A0!\x1B(I0!\x1B(J\x1B$Ax\x1B(Iy", "\x88\x9F\x88\x9Fxy"},
        {"double-byte text ends", "\x1B$B\x1BNx0!\x1BNy", "x0!y"},
        {"ESC is written", "\x1BN\x1B$B", "\x1B$B"},
    });
}

TEST_F(Japanese, kept_a_lone_cr_ends_a_line) {
    converts<JisDecoder>({{"text", "a\rb\r\r\nc", "a\r\nb\r\n\r\nc"}, {"a pair", "\x1B$B0\r0!", "0\r\n\x88\x9F"}});
}

TEST_F(Japanese, repairs) {
    converts<RepairingDecoder>({
        {"both are damaged", "a $B0!0!(Jx\r\n", "a \x88\x9F\x88\x9Fx\r\n"},
        {"the older opener, the newer closer", "$@0!(Bx", "\x88\x9Fx"},
        {"behind another dollar", "$$B0!(B", "$\x88\x9F"},
        {"no opener", "$C0!(B$", "$C0!(B$"},
        {"an intact closer", "$B0!\x1B(Jx", "\x88\x9Fx"},
        {"an intact closer in a pair", "$B0!X\x1B(J", "\x88\x9FX"},
        {"a closer in a pair is none", "$B0(J!(B", "\x88\xA6\x95\x9F"},
        {"a closer needs a pair before it", "$B(J0!(J", "\x84\xC8\x88\x9F"},
        {"an intact opener ends the search", "$BAR \x1B$B0!\x1B(J.\n", "$BAR \x88\x9F.\n"},
        {"so does any other sequence", "$BAR\x1B(I.\x1BNx\n", "$BAR.x\n"},
        {"twice on a line", "$B0!(B-$B0!(B", "\x88\x9F-\x88\x9F"},
        {"not in double-byte text", "\x1B$B$B$B(J\x1B(J", "\x82\xC0\x82\xC0\x84\xC8"},
    });
    converts<JisDecoder>({{"not asked for", "$B0!(Jx", "$B0!(Jx"}});
}

TEST_F(Japanese, kept_a_failed_repair_ends_its_line_in_crlf) {
    converts<RepairingDecoder>({
        {"CR LF", "$Bill\r\na", "$Bill\r\na"},
        {"LF, with a sequence cut", "$Bill\x1B(\na", "$Bill\r\na"},
        {"the end", "US$B", "US$B\r\n"},
    });
    const std::string reach = "$B" + std::string(JisDecoder::kMostHeld - 4, '!');
    EXPECT_EQ(fed_text<RepairingDecoder>(reach + "(B\n", 999), fed_text<JisDecoder>("\x1B" + reach, 999) + "\n");
    EXPECT_EQ(fed_text<RepairingDecoder>(reach + "!!(B\n", 999), reach + "!!(B\r\n") << "too far";
}

TEST_F(Japanese, cuts_change_nothing) {
    const std::vector<std::string> pieces = {"\x1B$B", "\x1B(J", "\x1B", "$B",   "$",    "(B",   "(",    "J",   "\r\n",
                                             "\r",     "\n",     "0!",   "\x81", "\xB6", "\xDE", "\xFF", "\0"s, "a"};
    for (int round = 0; round < 100; ++round) {
        const std::string text = random_text(pieces, 40);
        converts<MarkingEncoder>({{"to JIS", text, fed_text<MarkingEncoder>(text, 99)}});
        converts<RepairingDecoder>({{"to Shift-JIS", text, fed_text<RepairingDecoder>(text, 99)}});
    }
    for (const std::string tail : {"\x1B$B0!0!\x1B(J\r\nend\r\n", "$B0!0!(J\r\nend\r\n", "\x1BNx\rend\n"}) {
        for (std::size_t before = 1010; before < 1026; ++before) {
            const std::string text = std::string(before, 'x') + tail;
            EXPECT_EQ(run(to_sjis(INT32_MAX, 1), text),
                      (Outcome{0, text.size(), fed_text<RepairingDecoder>(text, 99999)}));
        }
    }
    const std::string block = "line\r\n" + std::string(4090, 'x');
    EXPECT_EQ(run(to_sjis(), block).output, block) << "no line end where a block ends";
}

TEST_F(Japanese, kept_the_count_is_of_bytes_produced_by_whole_lines) {
    const std::string first = "\x1B$B0!\x1B(Bxy\r\n", second = std::string(1030, 'x') + "\r\n",
                      wanted = "\x88\x9Fxy\r\n";
    const int in = CreateFile(file("in", "passed\r\n" + first).c_str(), 1);
    const std::string path = file("out", "");
    const int out = CreateFile(path.c_str(), 2);
    char* line = nullptr;
    EXPECT_EQ(VELGetLine(in, &line), 1);
    EXPECT_EQ(JIS2ShiftJIS(in, 1, out, 0), 0);
    EXPECT_EQ(content(path), wanted) << "from the line position on";
    CloseHandle(in);
    CloseHandle(out);
    for (const int32_t none : {0, -1}) EXPECT_EQ(run(to_sjis(none), first).output, "");
    EXPECT_EQ(run(to_sjis(6), first + second).output, wanted);
    EXPECT_EQ(run(to_sjis(7), first + second + "z").output, wanted + second);
}

TEST_F(Japanese, failures_are_told) {
    const std::string text = file("text", std::string(300, 'A') + "\r\n");
    const int folder = CreateFile(directory().c_str(), 1);
    const int good = CreateFile(file("out", "").c_str(), 2);
    const int full = CreateFile("/dev/full", 2);
    for (const Call& call : {to_jis(), to_jis("?"), to_sjis(), to_sjis(99, 1)}) {
        EXPECT_EQ(call(folder, good), -1) << "a read that fails";
        EXPECT_EQ(call(-1, good), -1) << "no input";
        for (const int out : {-1, full}) {
            const int in = CreateFile(text.c_str(), 1);
            EXPECT_EQ(call(in, out), -1) << out;
            CloseHandle(in);
        }
    }
    EXPECT_EQ(take_log(1).size(), 2U) << "the line reader tells of the folder";
    for (const int handle : {folder, good, full}) CloseHandle(handle);
}

TEST_F(Japanese, texts) {
    EXPECT_EQ(owned(bufShiftJIS2JIS("a\x88\x9F\x80z")), "a\x1B$B0!\x1B(J\x80z");
    EXPECT_EQ(owned(bufJIS2ShiftJIS_wmc("a\x1B$B0!\x1B(B$B0!(B")), "a\x88\x9F\x88\x9F");
    for (const char* empty : {static_cast<const char*>(nullptr), "", "\x1B$B\x1B(B"}) {
        EXPECT_EQ(bufJIS2ShiftJIS_wmc(empty), nullptr);
    }
    EXPECT_EQ(bufShiftJIS2JIS(nullptr), nullptr);
    EXPECT_EQ(bufShiftJIS2JIS(""), nullptr);

    EXPECT_EQ(bufJIS2ShiftJIS("\x1B$B0!"), nullptr) << "not configured";
    set("Gateway", "LocalCharSet", "iso-2022-jp");
    EXPECT_EQ(owned(bufJIS2ShiftJIS("\x1B$B0!")), "\x88\x9F");
    set("Options", "RepairDamagedJISinHeaders", "NO");
    EXPECT_EQ(owned(bufJIS2ShiftJIS("$B0!(J")), "$B0!(J");
    set("Options", "DisableJISinHeaders", "YES");
    EXPECT_EQ(bufJIS2ShiftJIS("\x1B$B0!"), nullptr);
    EXPECT_EQ(owned(bufJIS2ShiftJIS_wmc("\x1B$B0!")), "\x88\x9F");
    {
        const SmallDisk disk(4);
        EXPECT_EQ(bufShiftJIS2JIS("\x88\x9F"), nullptr) << "what comes out does not fit";
        EXPECT_EQ(bufShiftJIS2JIS("a long text"), nullptr);
    }
    EXPECT_TRUE(left_behind("MIME").empty());
    set("Gateway", "TemporaryDirectory", (directory() / "missing").c_str());
    EXPECT_EQ(bufShiftJIS2JIS("a"), nullptr);

    char text[] = "\x1B$B\tx\x7F\x80\r\n";
    EXPECT_EQ(EliminateCntrlChars(text), text);
    EXPECT_STREQ(text, "$Bx\x80");
    EXPECT_EQ(EliminateCntrlChars(nullptr), nullptr);
}

TEST_F(Japanese, files_are_converted_in_place_when_that_is_configured) {
    const std::string jis = "$B0!(B\r\n", sjis = "\x88\x9F\r\n";
    const std::string path = file("mail", jis);
    struct {
        const char *char_set, *scan, *repair;  // null: not set
        bool converts;
    } const rows[] = {
        {nullptr, nullptr, nullptr, false},    {"ISO-2022-JP", "no", nullptr, false},
        {"ISO-2022-JP", nullptr, "NO", false}, {"ISO-2022-jp", nullptr, nullptr, true},
        {"US-ASCII", "YES", nullptr, true},    {"US-ASCII", "any", "yes", true},
    };
    for (const auto& row : rows) {
        set("Gateway", "LocalCharSet", row.char_set);
        set("Options", "ScanForJIS", row.scan);
        set("Options", "RepairDamagedJIS", row.repair);
        file("mail", jis);
        EXPECT_EQ(CheckJapanese(path.c_str()), 0);
        EXPECT_EQ(content(path), row.converts ? sjis : jis);
    }
    std::string grows, grown;
    for (int line = 0; line < 3000; ++line) grows += "a\r", grown += "a\r\n";
    file("mail", grows);
    EXPECT_EQ(CheckJapanese(path.c_str()), 0);
    EXPECT_EQ(content(path), grown) << "to the end, whatever the size";
    EXPECT_TRUE(left_behind("MIME").empty());
}

class JapaneseFiles : public Japanese {
  protected:
    JapaneseFiles() { set("Options", "ScanForJIS", "YES"); }

    void fails(const char* path, const std::string& why) {
        EXPECT_EQ(CheckJapanese(path), -1);
        EXPECT_EQ(take_log(1).back(), why);
    }

    const std::string text_ = std::string(9000, 'x');
    const std::string path_ = file("mail", text_);
    const std::string missing_ = directory() / "missing";
};

TEST_F(JapaneseFiles, stay_as_they_are_when_they_cannot_be_converted) {
    fails(missing_.c_str(), "fileopen failed.");
    fails(nullptr, "fileopen failed.");
    fails(directory().c_str(), "JIS2ShiftJIS conversion failed.");
    fails("/proc/version", "rename failed.");
    {
        const SmallDisk disk(4096);
        fails(path_.c_str(), "JIS2ShiftJIS conversion failed.");
    }
    EXPECT_TRUE(left_behind("MIME").empty());
    for (char digit = '0'; digit <= '9'; ++digit) {
        std::filesystem::create_symlink(missing_ + "/none", directory() / ("MIME0000"s + digit));
    }
    fails(path_.c_str(), "filecreate failed.");
    EXPECT_EQ(left_behind("MIME").size(), 10U) << "what others made stays";
    set("Gateway", "TemporaryDirectory", missing_.c_str());
    fails(path_.c_str(), "out of memory");
    EXPECT_EQ(content(path_), text_);
}

TEST_F(JapaneseFiles, are_replaced_across_file_systems) {
    struct stat here {
    }, there{};
    std::string other = "/dev/shm/vel-japanese-XXXXXX";
    if (::stat(directory().c_str(), &here) != 0 || ::stat("/dev/shm", &there) != 0 || here.st_dev == there.st_dev ||
        !::mkdtemp(other.data())) {
        GTEST_SKIP() << "no other file system is at hand";
    }
    set("Gateway", "TemporaryDirectory", other.c_str());
    const std::string path = file("small", "\x1B$B0!\x1B(B\r\n");
    EXPECT_EQ(CheckJapanese(path.c_str()), 0);
    EXPECT_EQ(content(path), "\x88\x9F\r\n");
    EXPECT_EQ(left_behind("small"), std::vector{"small"s});
    EXPECT_FALSE(std::filesystem::exists(other + "/MIME00000"));
    std::filesystem::remove_all(other);
}

}  // namespace
}  // namespace vel::test
