// Japanese conversion by its calls: characters, handles, texts and files.
#include <sys/stat.h>

#include "codec/japanese_bytes.h"
#include "frame/owned.h"
#include "tests/codec/codec_calls.h"
#include "tests/codec/japanese_codecs.h"
#include "vel/japanese.h"

namespace vel::test {
namespace {

using namespace std::string_literals;

class JapaneseCalls : public CodecTest {
  protected:
    static Call to_jis(const char* mark = nullptr) {
        return [=](int in, int out) { return ShiftJIS2JIS(in, out, mark); };
    }
    static Call to_sjis(int32_t count = INT32_MAX, int repair = 0) {
        return [=](int in, int out) { return JIS2ShiftJIS(in, count, out, repair); };
    }
    static std::string owned(char* text) {
        const COwned<char> freed(text);
        return text ? text : "(null)";
    }
};

TEST_F(JapaneseCalls, convert_single_characters) {
    uint8_t first = 0x88, second = 0x9F;
    sjis2jis(&first, &second);
    EXPECT_EQ((DoubleByte{first, second}), (DoubleByte{0x30, 0x21}));
    jis2sjis(&first, &second);
    EXPECT_EQ((DoubleByte{first, second}), (DoubleByte{0x88, 0x9F}));
    sjis2jis(nullptr, &second);
    jis2sjis(&first, nullptr);

    const int in = CreateFile(file("in", "").c_str(), 1);
    struct {
        uint8_t katakana, next;
        DoubleByte wanted;
        int offset;  // from 2 on
    } const rows[] = {{0xB6, 0xDE, {0x83, 0x4B}, 2},
                      {0xB6, 'A', {0x83, 0x4A}, 1},
                      {0xA1, 0, {0x81, 0x42}, 2},
                      {0xE0, 'A', {0xE0, 'A'}, 2}};
    for (const auto& row : rows) {
        SetFilePointer(in, 2, nullptr, SEEK_SET);
        first = row.katakana, second = row.next;
        half2full(in, row.next, &first, &second);
        EXPECT_EQ((DoubleByte{first, second}), row.wanted);
        EXPECT_EQ(SetFilePointer(in, 0, nullptr, SEEK_CUR), row.offset) << int{row.katakana};
    }
    half2full(in, 'A', nullptr, &second);
    half2full(-1, 'A', &first, nullptr);
    CloseHandle(in);
}

TEST_F(JapaneseCalls, write_marks_of_any_length) {
    for (const std::size_t length : {0U, 31U, 100'000U}) {
        const std::string mark(length, 'm');
        std::string input, wanted;
        for (std::size_t bytes = 0; bytes < 500'000; bytes += length + 2) {
            input += "\x80z";
            wanted += (mark.empty() ? "\x80" : mark) + "z";
        }
        EXPECT_EQ(run(to_jis(mark.c_str()), input), (Outcome{0, input.size(), wanted})) << length;
    }
}

TEST_F(JapaneseCalls, read_lines_however_they_are_cut) {
    const std::vector<std::string> pieces = {"\x1B$B", "\x1B(J", "\x1B", "$B",   "(B",   "\r\n", "\r",
                                             "\n",     "0!",     "\x81", "\xB6", "\xDE", "\0"s,  "a"};
    for (std::size_t round = 0; round < 100; ++round) {
        const std::string text = random_text(pieces, 40);
        for (const std::size_t piece : {1, 2, 3}) {
            EXPECT_EQ(fed_text<MarkingEncoder>(text, piece), fed_text<MarkingEncoder>(text, 99));
            EXPECT_EQ(fed_text<RepairingDecoder>(text, piece), fed_text<RepairingDecoder>(text, 99));
        }
    }
    for (std::size_t before = 1010; before < 1026; ++before) {
        const std::string text = std::string(before, 'x') + "\x1B$B0!0!\x1B(J$B0!0!(J\x1BNx\r\nend\rend\n";
        EXPECT_EQ(run(to_sjis(INT32_MAX, 1), text), (Outcome{0, text.size(), fed_text<RepairingDecoder>(text, 99999)}));
    }
    const std::string block = "line\r\n" + std::string(4090, 'x');
    EXPECT_EQ(run(to_sjis(), block).output, block) << "no line end where a block ends";
}

TEST_F(JapaneseCalls, kept_the_count_is_of_bytes_produced_by_whole_lines) {
    const std::string first = "\x1B$B0!\x1B(Bxy\r\n", second = std::string(1030, 'x') + "\r\n",
                      wanted = "\x88\x9Fxy\r\n";
    const auto behind_a_line = [](int in, int out) {
        char* line = nullptr;
        return VELGetLine(in, &line) == 1 ? JIS2ShiftJIS(in, 1, out, 0) : 1;
    };
    EXPECT_EQ(run(behind_a_line, "passed\r\n" + first).output, wanted) << "from the line position on";
    for (const int32_t none : {0, -1}) EXPECT_EQ(run(to_sjis(none), first).output, "");
    EXPECT_EQ(run(to_sjis(6), first + second).output, wanted);
    EXPECT_EQ(run(to_sjis(7), first + second + "z").output, wanted + second);
}

TEST_F(JapaneseCalls, tell_of_failures) {
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
    EXPECT_THAT(take_log(1), testing::SizeIs(2)) << "the line reader tells of the folder";
    for (const int handle : {folder, good, full}) CloseHandle(handle);
}

TEST_F(JapaneseCalls, convert_texts) {
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

TEST_F(JapaneseCalls, convert_files_in_place_when_that_is_configured) {
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
    for (int line = 0; line < 3000; ++line) grows += "\r\r\n", grown += "\r\n\r\n";
    file("mail", grows);
    EXPECT_EQ(CheckJapanese(path.c_str()), 0);
    EXPECT_EQ(content(path), grown) << "to the end, whatever the size";
    EXPECT_TRUE(left_behind("MIME").empty());
}

class JapaneseFiles : public JapaneseCalls {
  protected:
    JapaneseFiles() { set("Options", "ScanForJIS", "YES"); }

    void fails(const char* path, const std::string& why) {
        EXPECT_EQ(CheckJapanese(path), -1);
        const auto told = take_log(1);
        EXPECT_EQ(told.empty() ? "nothing" : told.back(), why);
    }
};

TEST_F(JapaneseFiles, stay_as_they_are_when_they_cannot_be_converted) {
    const std::string text(9000, 'x'), path = file("mail", text), missing = directory() / "missing";
    fails(missing.c_str(), "fileopen failed.");
    fails(nullptr, "fileopen failed.");
    fails(directory().c_str(), "JIS2ShiftJIS conversion failed.");
    fails("/proc/version", "rename failed.");
    {
        const SmallDisk disk(4096);
        fails(path.c_str(), "JIS2ShiftJIS conversion failed.");
    }
    EXPECT_TRUE(left_behind("MIME").empty());
    for (char digit = '0'; digit <= '9'; ++digit) {
        std::filesystem::create_symlink(missing + "/none", directory() / ("MIME0000"s + digit));
    }
    fails(path.c_str(), "filecreate failed.");
    EXPECT_EQ(left_behind("MIME").size(), 10U) << "what others made stays";
    set("Gateway", "TemporaryDirectory", missing.c_str());
    fails(path.c_str(), "out of memory");
    EXPECT_EQ(content(path), text);
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
