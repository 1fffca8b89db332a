#include "vel/binhex.h"

#include <fcntl.h>

#include <array>
#include <climits>
#include <cstdio>

#include "codec/big_endian.h"
#include "codec/binhex_alphabet.h"
#include "codec/binhex_encoder.h"
#include "codec/crc16.h"
#include "frame/line_file.h"
#include "tests/codec/binhex_split.h"
#include "tests/codec/codec_calls.h"
#include "vel/platform/log.h"

namespace vel::test {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

std::string big(uint32_t value, int bytes) {
    std::string text;
    while (bytes-- > 0) text += static_cast<char>(value >> 8 * bytes);
    return text;
}

// Bit by bit, as the rules have it.
uint16_t slow_crc(std::string_view bytes) {
    unsigned crc = 0;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned>(static_cast<uint8_t>(byte)) << 8;
        for (int bit = 0; bit < 8; ++bit) crc = (crc << 1 ^ (crc & 0x8000 ? 0x1021 : 0)) & 0xFFFF;
    }
    return static_cast<uint16_t>(crc);
}

std::string with_crc(const std::string& bytes) { return bytes + big(slow_crc(bytes), 2); }

std::string slow_runs(std::string_view bytes) {
    std::string packed;
    for (std::size_t at = 0, end = 0; at < bytes.size(); at = end) {
        const char byte = bytes[at];
        for (end = at; end < bytes.size() && bytes[end] == byte && end - at < 255;) ++end;
        if (byte == '\x90') {
            packed += "\x90\0"s;
            end = at + 1;
        } else {
            packed += end - at < 3 ? std::string(end - at, byte) : byte + "\x90"s + static_cast<char>(end - at);
        }
    }
    return packed;
}

// Everything behind the banner's line.
std::string slow_text(std::string packed) {
    packed.append((3 - packed.size() % 3) % 3, '\xFF');
    std::string characters = ":";
    for (std::size_t bit = 0; bit < packed.size() * 8; bit += 6) {
        unsigned value = 0;
        for (std::size_t i = bit; i < bit + 6; ++i) value = value << 1 | (packed[i / 8] >> (7 - i % 8) & 1);
        characters += kBinhexAlphabet[value];
    }
    for (std::size_t at = 64; at <= characters.size(); at += 66) characters.insert(at, "\r\n");
    return characters + ":\r\n\r\n";
}

constexpr std::string_view kBanner = "(This file must be converted with BinHex 4.0)\r\n";

// A Macintosh file, as both formats hold it.
struct MacFile {
    std::string name = "a name";
    std::string type = "TEXT", creator = "ttxt";
    unsigned flags = 0;
    std::string data = "", resource = "";

    std::string stream() const {
        const std::string header = static_cast<char>(name.size()) + name + '\0' + type + creator + big(flags, 2);
        return with_crc(header + big(length(data), 4) + big(length(resource), 4)) + with_crc(data) + with_crc(resource);
    }
    std::string hqx() const { return std::string(kBanner) + slow_text(slow_runs(stream())); }

    std::string apple_single() const {
        uint32_t offset = 74;
        std::string head = "\0\x05\x16\0\0\x02\0\0"s + std::string(16, '\0') + big(4, 2), entries;
        const auto add = [&](uint32_t id, const std::string& entry) {
            head += big(id, 4) + big(offset, 4) + big(length(entry), 4);
            offset += length(entry);
            entries += entry;
        };
        add(1, data);
        add(2, resource);
        add(3, name);
        add(9, type + creator + big(flags, 2) + std::string(22, '\0'));
        return head + entries;
    }

  private:
    static uint32_t length(const std::string& text) { return static_cast<uint32_t>(text.size()); }
};

class Binhex : public CodecTest {
  protected:
    struct Made {
        int result;
        std::string content, name;
        bool operator==(const Made&) const = default;
        friend std::ostream& operator<<(std::ostream& out, const Made& made) {
            return out << made.result << " " << testing::PrintToString(made.content) << " " << made.name;
        }
    };

    Made decoded(std::string_view text, std::size_t disk = kEndless) {
        const int in = CreateFile(file("in", text).c_str(), 1);
        const Made made = decoded_from(in, static_cast<long>(text.size()), disk);
        CloseHandle(in);
        return made;
    }

    Made decoded_from(int in, long count, std::size_t disk = kEndless) {
        char *path = nullptr, *name = nullptr;
        Made made{};
        {
            const SmallDisk full(disk);
            made.result = ConvertBinHexToAS(in, count, &path, &name);
        }
        EXPECT_EQ(path != nullptr, made.result == 0);
        EXPECT_EQ(name != nullptr, made.result == 0);
        if (name) made.name = name;
        std::free(name);
        return taken(made, path);
    }

    Made encoded(std::string_view apple_single, std::size_t disk = kEndless) {
        const std::string source = file("in", apple_single);
        char* path = nullptr;
        Made made{};
        {
            const SmallDisk full(disk);
            made.result = ConvertASToBinHex(source.c_str(), &path);
        }
        EXPECT_EQ(path != nullptr, made.result == 0);
        return taken(made, path);
    }

    // The file goes, and nothing else may be there.
    Made taken(Made made, char* path) {
        if (path) {
            EXPECT_TRUE(std::string(path).starts_with((directory() / "binhex").string()));
            made.content = content(path);
            ::unlink(path);
            std::free(path);
        }
        EXPECT_THAT(left_behind("binhex"), ElementsAre());
        return made;
    }

    MacFile random_file(std::size_t data, std::size_t resource) {
        const std::vector<std::string> pieces = {"\x90",          "\0"s, "\0"s, "a", "a", "b", std::string(400, 'r'),
                                                 random_bytes(40)};
        MacFile made;
        made.data = random_text(pieces, data);
        made.resource = random_text(pieces, resource);
        return made;
    }
};

TEST_F(Binhex, crc) {
    EXPECT_EQ(slow_crc("123456789"), 0x31C3);
    EXPECT_EQ(Crc16().finished(), 0);
    for (std::size_t length = 0; length < 100; ++length) {
        const std::string bytes = random_bytes(length);
        const std::size_t cut = random_below(length + 1);
        Crc16 crc;
        crc.more(bytes_of(bytes).first(cut));
        crc.more(bytes_of(bytes).subspan(cut));
        ASSERT_EQ(crc.finished(), slow_crc(bytes)) << length;
    }
    EXPECT_EQ(to_MAC_WORD(to_MAC_WORD(0x1234)), 0x1234);
    EXPECT_EQ(long_at(bytes_of("\x90\x01\x02\x03").data()), 0x90010203u);
}

TEST_F(Binhex, a_small_file_both_ways) {
    const std::string text = std::string(kBanner) + ":!@%!9%9B9(4dH(3!N!8&!*!%TkKSC@aXEm0L!!$r:\r\n\r\n";
    const MacFile mac{"a", "TEXT", "ttxt", 0, "hello", ""};
    EXPECT_EQ(encoded(mac.apple_single()), (Made{0, text, ""}));
    EXPECT_EQ(decoded(text), (Made{0, mac.apple_single(), "a"}));
}

TEST_F(Binhex, runs) {
    struct {
        std::string bytes, packed;
    } const rows[] = {
        {"", ""},
        {"aab", "aab"},
        {"aaab",
         "a\x90\x03"
         "b"},
        {"aabbccc", "aabbc\x90\x03"},
        {std::string(255, 'a'), "a\x90\xFF"},
        {std::string(256, 'a') + "b",
         "a\x90\xFF"
         "ab"},
        {std::string(300, 'a'),
         "a\x90\xFF"
         "a\x90\x2D"},
    };
    for (const auto& row : rows) {
        for (const std::size_t piece : {1, 2, 1000}) {
            EXPECT_EQ(":" + fed_text<BinhexEncoder>(row.bytes, piece), slow_text(row.packed)) << row.bytes;
        }
    }
}

TEST_F(Binhex, kept_a_marker_is_written_as_a_pair_each_time) {
    const auto packed = [](std::string_view bytes) { return ":" + fed_text<BinhexEncoder>(bytes, 100); };
    EXPECT_EQ(packed("\x90\x90"), slow_text("\x90\0\x90\0"s));
    EXPECT_EQ(packed("aaa\x90\x90\x90"
                     "a"),
              slow_text("a\x90\x03\x90\0\x90\0\x90\0a"s));
}

TEST_F(Binhex, kept_the_last_group_is_filled_with_ff) {
    EXPECT_EQ(fed_text<BinhexEncoder>("abc", 3).substr(4), ":\r\n\r\n");
    EXPECT_EQ(":" + fed_text<BinhexEncoder>("abcd", 4), slow_text("abcd\xFF\xFF"));
    EXPECT_EQ(":" + fed_text<BinhexEncoder>("abcde", 5), slow_text("abcde\xFF"));
}

TEST_F(Binhex, equals_the_slow_one_at_every_length) {
    for (std::size_t length = 0; length <= 1500; ++length) {
        const MacFile mac = random_file(length, random_below(3) == 0 ? length : 0);
        const std::string stream = mac.stream(), text = mac.hqx();
        ASSERT_EQ(":" + fed_text<BinhexEncoder>(stream, 1 + random_below(stream.size())), text.substr(kBanner.size()));
        ASSERT_EQ(split(text, 1 + random_below(100)), (SplitFile{0, mac.name, mac.data, mac.resource}));
    }
}

TEST_F(Binhex, files_of_every_size) {
    for (const std::size_t size : {0, 1, 63, 255, 4096, 40'000, 200'000}) {
        const MacFile mac = random_file(size, size / 3);
        EXPECT_EQ(encoded(mac.apple_single()), (Made{0, mac.hqx(), ""})) << size;
        EXPECT_EQ(decoded(mac.hqx()), (Made{0, mac.apple_single(), mac.name})) << size;
    }
    MacFile run;  // a thousand bytes from a dozen
    run.data = std::string(3'000'000, 'x');
    EXPECT_EQ(decoded(run.hqx()), (Made{0, run.apple_single(), run.name}));
}

TEST_F(Binhex, kept_flags_are_read_and_not_written) {
    MacFile mac{"f", "APPL", "FLAG", 0x8123, "data", "resource"};
    EXPECT_EQ(decoded(mac.hqx()).content, mac.apple_single());
    const std::string apple_single = mac.apple_single();
    mac.flags = 0;
    EXPECT_EQ(encoded(apple_single).content, mac.hqx());
}

TEST_F(Binhex, finds_and_reads_text) {
    const MacFile mac{"name", "TEXT", "ttxt", 0, "some data, aaaaaaaaaaaaaaaaaaaaaaaaaaa, \x90 and more of it", "fork"};
    const std::string text = mac.hqx(), characters = text.substr(kBanner.size());
    const std::string banner(kBanner);
    const auto closing = text.rfind(':');
    const auto changed = [&](std::size_t at, const char* by) { return std::string(text).replace(at, 1, by); };
    struct {
        const char* name;
        std::string text;
        int result = 0;
    } const rows[] = {
        {"text around it", "prose: (This (This file\r\n" + text + "more:"},
        {"a mismatch begins the banner", "(This file " + text},
        {"no banner", characters, -1},
        {"no colon", banner + characters.substr(1, 80), -1},
        {"nothing", "", -1},
        {"no characters", banner + "::", -1},
        {"white space", std::string(text).insert(closing, "\n \r").insert(banner.size() + 5, " \t\r\n\n\r ")},
        {"outside the alphabet", changed(banner.size() + 5, "7"), -2},
        {"above 127", changed(banner.size() + 5, "\xA0"), -2},
        {"NUL", changed(banner.size() + 5, "\n").replace(banner.size() + 5, 1, 1, '\0'), -2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(decoded(row.text).result, row.result);
        for (const std::size_t piece : {1, 3, 64, 5000}) {
            const SplitFile got = split(row.text, piece);
            EXPECT_EQ(got.result, row.result) << "in pieces of " << piece;
            if (row.result == 0) {
                EXPECT_EQ(got, (SplitFile{0, mac.name, mac.data, mac.resource}));
            }
        }
    }
}

TEST_F(Binhex, kept_the_banner_counts_in_its_letters_and_with_any_version) {
    const std::string characters = MacFile().hqx().substr(kBanner.size());
    EXPECT_EQ(decoded("(This file must be converted with BinHex 5.0) or so\r\n" + characters).result, 0);
    EXPECT_EQ(decoded("(this file must be converted with BinHex 4.0)\r\n" + characters).result, -1);
}

TEST_F(Binhex, kept_the_version_in_a_header_does_not_count) {
    const std::string empty_fork(2, '\0'),
        stream = with_crc("\1nVTEXTttxt\0\0\0\0\0\0\0\0\0\0"s) + empty_fork + empty_fork;
    EXPECT_EQ(decoded(std::string(kBanner) + slow_text(stream)), (Made{0, MacFile{"n"}.apple_single(), "n"}));
}

TEST_F(Binhex, kept_what_follows_the_last_crc_does_not_count) {
    MacFile mac;
    for (mac.data = ""; mac.data.size() < 3; mac.data += 'd') {  // the last CRC ends anywhere in its group
        const std::string packed = slow_runs(mac.stream()), text = mac.hqx();
        const std::size_t closing = text.rfind(':');
        const std::size_t needed = closing - (3 - packed.size() % 3) % 3;  // without the characters of the pad
        for (const char* end : {"", "\r\n", "~", ":", "\xFF\xFF", "!!!!!!!!!!!!"}) {
            EXPECT_EQ(split(text.substr(0, needed) + end, 1000).result, 0) << packed.size() << end;
        }
        EXPECT_EQ(split(text.substr(0, needed - 1), 1000).result, -1) << packed.size();
        EXPECT_EQ(split(text.substr(0, needed - 1) + '~', 1000).result, -2) << packed.size();
    }
}

TEST_F(Binhex, kept_a_colon_fills_the_last_group_with_zeros) {
    const MacFile mac{"nn", "TEXT", "ttxt", 0, "d", ""};  // the last CRC is zero
    const std::string text = mac.hqx();
    const std::size_t last_group = text.rfind(':') - 4;
    ASSERT_EQ(slow_runs(mac.stream()).size() % 3, 2u);
    EXPECT_EQ(split(text.substr(0, last_group + 1), 1000).result, -1);
    EXPECT_EQ(split(text.substr(0, last_group + 1) + ":", 1000).result, 0);
    EXPECT_EQ(split(text.substr(0, last_group) + ":", 1000).result, -1);
}

TEST_F(Binhex, refuses_streams_that_are_wrong) {
    const auto text_of = [](const std::string& packed) { return std::string(kBanner) + slow_text(packed); };
    const auto header = [](const std::string& name, uint32_t data, uint32_t resource) {
        return with_crc(static_cast<char>(name.size()) + name + "\0TEXTttxt\0\0"s + big(data, 4) + big(resource, 4));
    };
    const std::string empty_fork(2, '\0'), longest(63, 'n');
    struct {
        const char* name;
        std::string packed;
        int result = -1;
    } const rows[] = {
        {"empty forks", header("n", 0, 0) + empty_fork + empty_fork, 0},
        {"no name", header("", 0, 0) + empty_fork + empty_fork, 0},
        {"longest name", slow_runs(header(longest, 0, 0) + empty_fork + empty_fork), 0},
        {"name too long", slow_runs(header(longest + 'n', 0, 0) + empty_fork + empty_fork)},
        {"name of 255", slow_runs(header(std::string(255, 'n'), 0, 0) + empty_fork + empty_fork)},
        {"repeated marker",
         header("n", 4, 0) + with_crc("\x90\x90\x90\x90").replace(0, 4, "\x90\0\x90\x04"s) + empty_fork, 0},
        {"a run of one",
         header("n", 3, 0) +
             with_crc("aab").replace(0, 3,
                                     "a\x90\x01"
                                     "ab"s) +
             empty_fork,
         0},
        {"header CRC", header("n", 0, 0).replace(21, 1, "!") + empty_fork + empty_fork},
        {"data CRC", header("n", 1, 0) + "a!!" + empty_fork},
        {"resource CRC", header("n", 0, 1) + empty_fork + "a!!"},
        {"fork of 2 GiB", header("n", 0x80000000, 0) + empty_fork + empty_fork},
        {"forks of 4 GiB", header("n", 0xFFFFFFFF, 0xFFFFFFFF) + empty_fork + empty_fork},
        {"forks of 2 GiB together", header("n", 0x40000000, 0x40000000) + empty_fork + empty_fork},
        {"fork longer than the stream", header("n", 0x7FFFFF00, 0) + empty_fork + empty_fork},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(split(text_of(row.packed), 7).result, row.result) << row.name;
        EXPECT_EQ(decoded(text_of(row.packed)).result, row.result) << row.name;
    }
}

TEST_F(Binhex, damage_leaves_no_file) {
    const MacFile mac = random_file(150, 40);
    const std::string text = mac.hqx();
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool whole = at >= text.rfind(':') - 2;
        if (!whole) {
            ASSERT_EQ(decoded(text.substr(0, at)).result, -1) << at;
        }
        std::string flipped = text;
        flipped[at] = static_cast<char>(flipped[at] ^ 1 << random_below(8));
        decoded(flipped);
    }
}

TEST_F(Binhex, kept_apple_single_is_read_by_its_descriptors) {
    const MacFile mac{"name", "TYPE", "CREA", 0, "the data", "the resource"};
    const auto made_of = [](const std::vector<std::array<std::string, 3>>& entries, const std::string& rest) {
        std::string text(24, '?');
        text += big(static_cast<uint32_t>(entries.size()), 2);
        for (const auto& [id, offset, length] : entries) text += id + offset + length;
        return text + rest;
    };
    const auto entry = [](uint32_t id, uint32_t offset, uint32_t size) {
        return std::array<std::string, 3>{big(id, 4), big(offset, 4), big(size, 4)};
    };
    const auto hqx = [&](auto change) {
        MacFile copy = mac;
        change(copy);
        return copy.hqx();
    };
    const std::string sixty_three(63, 'n');
    struct {
        const char* name;
        std::string file;
        std::string hqx;  // empty: refused
    } const rows[] = {
        {"any order, others skipped, any magic",
         made_of(
             {entry(9, 86, 8), entry(3, 94, 4), entry(8, 0xFFFFFFFF, 0xFFFFFFFF), entry(2, 98, 12), entry(1, 110, 8)},
             "TYPECREAnamethe resourcethe data"),
         mac.hqx()},
        {"the last of two", made_of({entry(1, 0, 5), entry(1, 50, 3)}, "new"),
         hqx([](MacFile& f) { f = {"", std::string(4, '\0'), std::string(4, '\0'), 0, "new", ""}; })},
        {"no entries", made_of({}, "anything"),
         hqx([](MacFile& f) { f = {"", std::string(4, '\0'), std::string(4, '\0'), 0, "", ""}; })},
        {"short Finder information", made_of({entry(9, 38, 5)}, "TYPEC"),
         hqx([](MacFile& f) { f = {"", "TYPE", "C\0\0\0"s, 0, "", ""}; })},
        {"name of 70", made_of({entry(3, 38, 70)}, std::string(70, 'n')),
         hqx([&](MacFile& f) { f = {sixty_three, std::string(4, '\0'), std::string(4, '\0'), 0, "", ""}; })},
        {"ends at the end", made_of({entry(1, 38, 0)}, ""),
         hqx([](MacFile& f) { f = {"", std::string(4, '\0'), std::string(4, '\0'), 0, "", ""}; })},
        {"empty file", "", ""},
        {"cut before the count", std::string(25, '\0'), ""},
        {"more descriptors than bytes", made_of({entry(1, 0, 0)}, "").replace(24, 2, "\0\x02"s), ""},
        {"65,535 descriptors", std::string(24, '\0') + "\xFF\xFF" + std::string(9000, '\0'), ""},
        {"data behind the end", made_of({entry(1, 38, 1)}, ""), ""},
        {"resource of 2 GiB", made_of({entry(2, 0, 0x80000000)}, ""), ""},
        {"name whose end wraps", made_of({entry(3, 0xFFFFFFFF, 2)}, "abc"), ""},
        {"Finder information behind the end", made_of({entry(9, 39, 32)}, std::string(32, 'f')), ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(encoded(row.file), (Made{row.hqx.empty() ? -1 : 0, row.hqx, ""})) << row.name;
    }
}

TEST_F(Binhex, a_full_disk_leaves_no_file) {
    const MacFile mac = random_file(50'000, 10'000);
    const std::string text = mac.hqx(), apple_single = mac.apple_single();
    for (const std::size_t missing : {std::size_t{1}, std::size_t{100}, text.size() - 60}) {
        EXPECT_EQ(decoded(text, apple_single.size() - missing).result, -1);
        EXPECT_EQ(encoded(apple_single, text.size() - missing).result, -1);
    }
    EXPECT_EQ(decoded(text, 50).result, -1);
}

TEST_F(Binhex, counts_pipes_and_null_arguments) {
    const MacFile mac = random_file(3000, 10);
    const std::string text = mac.hqx();
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ASSERT_TRUE(write_all(ends[1], text.data(), text.size()));
    ::close(ends[1]);
    EXPECT_EQ(decoded_from(ends[0], LONG_MAX), (Made{0, mac.apple_single(), mac.name}));
    ::close(ends[0]);

    const int in = CreateFile(file("in", "skip" + text).c_str(), 1);
    const auto from_4 = [&](long count) { return SetFilePointer(in, 4, nullptr, SEEK_SET), decoded_from(in, count); };
    EXPECT_EQ(from_4(static_cast<long>(text.size())).result, 0);
    EXPECT_EQ(from_4(static_cast<long>(text.size()) / 2).result, -1);
    EXPECT_EQ(from_4(0).result, -1);
    EXPECT_EQ(from_4(-1).result, -1);
    EXPECT_EQ(decoded_from(-1, 100).result, -1);
    EXPECT_EQ(ConvertBinHexToAS(in, 100, nullptr, nullptr), -1);
    CloseHandle(in);

    char* path = nullptr;
    EXPECT_EQ(ConvertASToBinHex(nullptr, &path), -1);
    EXPECT_EQ(ConvertASToBinHex("x", nullptr), -1);
    EXPECT_EQ(ConvertASToBinHex((directory() / "missing").c_str(), &path), -1);
    EXPECT_EQ(take_log(1).size(), 1u) << "the file layer's complaint";
    set("Gateway", "TemporaryDirectory", (directory() / "missing").c_str());
    EXPECT_EQ(decoded(text).result, -1);
    EXPECT_EQ(encoded(mac.apple_single()).result, -1);
}

// Closes the output behind the decoder's back, as soon as its creation is traced, and puts another file in its
// place.
class Meddler {
  public:
    Meddler() { LogCaptureStart(&Meddler::take, this); }
    ~Meddler() { LogCaptureStop(); }
    std::string path;
    std::string complaint;

  private:
    static void take(void* self, int, const char*, const char* text) { static_cast<Meddler*>(self)->take(text); }

    void take(const std::string& line) {
        constexpr std::string_view kCreated = "filecreate: ";
        if (line.starts_with("CloseHandle failed")) complaint = line;
        if (!line.starts_with(kCreated) || !path.empty()) return;
        const std::size_t end = line.find(", FileHandle #");
        path = line.substr(kCreated.size(), end - kCreated.size());
        const int output = std::stoi(line.substr(line.find('#') + 1));
        fileclose(output);
        const int other = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (other != output) {
            ::dup2(other, output);
            ::close(other);
        }
    }
};

TEST_F(Binhex, logs_a_file_that_cannot_be_closed) {
    const std::string text = MacFile().hqx();
    const int in = CreateFile(file("in", text).c_str(), 1);
    set("Debug", "LogFileIO", "TRUE");
    Meddler meddler;
    EXPECT_EQ(decoded_from(in, LONG_MAX).result, -1);
    EXPECT_THAT(meddler.path, testing::HasSubstr("binhex"));
    EXPECT_EQ(meddler.complaint, "CloseHandle failed for " + meddler.path);
}

}  // namespace
}  // namespace vel::test
