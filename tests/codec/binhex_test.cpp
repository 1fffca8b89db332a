#include "vel/binhex.h"

#include <fcntl.h>

#include <climits>
#include <cstdio>

#include "codec/big_endian.h"
#include "codec/binhex_combine.h"
#include "codec/binhex_encoder.h"
#include "frame/line_file.h"
#include "tests/codec/binhex_split.h"
#include "tests/codec/codec_calls.h"
#include "tests/codec/mac_file.h"
#include "vel/platform/log.h"

namespace vel::test {
namespace {

using testing::ElementsAre;

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
        char unset, *path = &unset, *name = &unset;
        Made made{};
        {
            const SmallDisk full(disk);
            made.result = ConvertBinHexToAS(in, count, &path, &name);
        }
        EXPECT_EQ(name != nullptr, made.result == 0);
        if (name) made.name = name;
        std::free(name);
        return taken(made, path);
    }

    Made encoded(std::string_view apple_single, std::size_t disk = kEndless) {
        const std::string source = file("in", apple_single);
        char unset, *path = &unset;
        Made made{};
        {
            const SmallDisk full(disk);
            made.result = ConvertASToBinHex(source.c_str(), &path);
        }
        return taken(made, path);
    }

    // The file goes, and nothing else may be there.
    Made taken(Made made, char* path) {
        EXPECT_EQ(path != nullptr, made.result == 0);
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

TEST_F(Binhex, a_small_file_both_ways) {
    const std::string text = kBanner + ":!@%!9%9B9(4dH(3!N!8&!*!%TkKSC@aXEm0L!!$r:\r\n\r\n";
    const MacFile mac{"a", "TEXT", "ttxt", 0, "hello", ""};
    EXPECT_EQ(encoded(mac.apple_single()), (Made{0, text, ""}));
    EXPECT_EQ(decoded(text), (Made{0, mac.apple_single(), "a"}));
}

std::string packed(std::string_view bytes) { return ":" + fed_text<BinhexEncoder>(bytes, 1000); }

TEST_F(Binhex, runs) {
    EXPECT_EQ(packed("aabbbb"), slow_text("aab\x90\x04"));
    EXPECT_EQ(packed(std::string(300, 'a')), slow_text("a\x90\xFF" + "a\x90\x2D"s));
    EXPECT_EQ(packed(std::string(256, 'a') + "b"), slow_text("a\x90\xFF" + "ab"s));
}

TEST_F(Binhex, kept_a_marker_is_written_as_a_pair_each_time) {
    EXPECT_EQ(packed("aaa\x90\x90\x90"), slow_text("a\x90\x03\x90\0\x90\0\x90\0"s));
}

TEST_F(Binhex, kept_the_last_group_is_filled_with_ff) {
    EXPECT_EQ(packed("abcd"), slow_text("abcd\xFF\xFF"));
    EXPECT_EQ(packed("abcdef").size(), slow_text("abcdef").size());
}

TEST_F(Binhex, equals_the_slow_one_at_every_length) {
    for (std::size_t length = 0; length <= 1500; ++length) {
        const MacFile mac = random_file(length, random_below(3) == 0 ? length : 0);
        const std::string stream = mac.stream();
        ASSERT_EQ(kBanner + ":" + fed_text<BinhexEncoder>(stream, 1 + random_below(stream.size())), mac.hqx());
    }
}

TEST_F(Binhex, files_of_every_size) {
    for (const std::size_t size : {0, 1, 63, 4096, 200'000}) {
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
    const std::size_t within = kBanner.size() + 5;
    const auto with = [&](std::string_view piece) { return std::string(text).replace(within, 1, piece); };
    struct {
        const char* name;
        std::string text;
        int result = 0;
    } const rows[] = {
        {"text around it", "prose: (This (This file\r\n" + text + "more:"},
        {"a mismatch begins the banner", "(This file " + text},
        {"white space", std::string(text).insert(text.rfind(':'), "\n \r").insert(within, " \t\r\n\n\r ")},
        {"no banner", characters, -1},
        {"no colon", kBanner + characters.substr(1, 80), -1},
        {"nothing", "", -1},
        {"no characters", kBanner + "::", -1},
        {"outside the alphabet", with("7"), -2},
        {"above 127", with("\xA0"), -2},
        {"NUL", with("\0"s), -2},
    };
    for (const auto& row : rows) {
        const SplitFile expected =
            row.result == 0 ? SplitFile{0, mac.name, mac.data, mac.resource} : SplitFile{row.result, "", "", ""};
        EXPECT_EQ(decoded(row.text).result, row.result) << row.name;
        for (const std::size_t piece : {1, 3, 5000}) EXPECT_EQ(split(row.text, piece), expected) << row.name << piece;
    }
}

TEST_F(Binhex, kept_the_banner_counts_in_its_letters_and_with_any_version) {
    const std::string characters = MacFile().hqx().substr(kBanner.size());
    EXPECT_EQ(split("(This file must be converted with BinHex 5.0) or so\r\n" + characters, 1000).result, 0);
    EXPECT_EQ(split("(this file must be converted with BinHex 4.0)\r\n" + characters, 1000).result, -1);
}

TEST_F(Binhex, kept_what_follows_the_last_crc_does_not_count) {
    MacFile mac;
    for (mac.data = ""; mac.data.size() < 3; mac.data += 'd') {  // the last CRC ends anywhere in its group
        const std::string text = mac.hqx();
        const std::size_t pad = (3 - slow_runs(mac.stream()).size() % 3) % 3, needed = text.rfind(':') - pad;
        for (const char* end : {"", "\r\n", "~", ":", "!!!!!!!!!!!!"}) {
            EXPECT_EQ(split(text.substr(0, needed) + end, 1000).result, 0) << pad << end;
        }
        EXPECT_EQ(split(text.substr(0, needed - 1), 1000).result, -1) << pad;
        EXPECT_EQ(split(text.substr(0, needed - 1) + '~', 1000).result, -2) << pad;
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

std::string packed_header(const std::string& name, std::size_t data, std::size_t resource, char version = '\0') {
    const std::string fields = version + "TEXTttxt\0\0"s + big(data, 4) + big(resource, 4);
    return slow_runs(with_crc(big(name.size(), 1) + name + fields));
}

TEST_F(Binhex, kept_the_version_in_a_header_does_not_count) {
    const std::string empty_forks(4, '\0');
    EXPECT_EQ(split(kBanner + slow_text(packed_header("n", 0, 0, 'V') + empty_forks), 7), (SplitFile{0, "n", "", ""}));
}

TEST_F(Binhex, reads_runs_and_refuses_streams_that_are_wrong) {
    const std::string empty(2, '\0');  // a fork and its CRC
    const auto fork = [&](const std::string& bytes, const std::string& as) {
        return packed_header("n", bytes.size(), 0) + as + big(slow_crc(bytes), 2) + empty;
    };
    struct {
        const char* name;
        std::string packed;
        int result = -1;
    } const rows[] = {
        {"a marker, repeated", fork("\x90\x90\x90\x90", "\x90\0\x90\x04"s), 0},
        {"a run of one", fork("aab", "a\x90\x01" + "ab"s), 0},
        {"a byte behind a run", fork("aab", "a\x90\x02" + "b"s), 0},
        {"a run of nothing", "\x90\x7F"s},  // zeros would be a file
        {"no name", packed_header("", 0, 0) + empty + empty, 0},
        {"longest name", packed_header(std::string(63, 'n'), 0, 0) + empty + empty, 0},
        {"name too long", packed_header(std::string(64, 'n'), 0, 0) + empty + empty},
        {"name of 255", packed_header(std::string(255, 'n'), 0, 0) + empty + empty},
        {"header CRC", packed_header("n", 0, 0).replace(3, 1, "!") + empty + empty},
        {"data CRC", packed_header("n", 1, 0) + "a!!" + empty},
        {"resource CRC", packed_header("n", 0, 1) + empty + "a!!"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(decoded(kBanner + slow_text(row.packed)).result, row.result) << row.name;
    }
}

TEST_F(Binhex, forks_that_no_file_holds_are_refused_before_they_are_read) {
    constexpr std::size_t kMost = INT32_MAX - 74 - 63 - 32;  // beside header, longest name and Finder information
    struct {
        std::size_t data, resource;
        const char* read;
    } const rows[] = {{kMost, 0, "bytes"}, {1, kMost - 1, "b"},         {kMost + 1, 0, ""},
                      {kMost, kMost, ""},  {0x80000000, 0, ""},         {0x40000000, 0x40000000, ""},
                      {1, 0xFFFFFFFF, ""}, {0xFFFFFFFF, 0xFFFFFFFF, ""}};
    for (const auto& [data, resource, read] : rows) {
        const SplitFile got = split(kBanner + slow_text(packed_header("n", data, resource) + "bytes"), 1000);
        EXPECT_EQ(got.result, -1);
        EXPECT_EQ(got.data.substr(0, 5), read) << data << " + " << resource;  // the pad is behind them
    }
}

TEST_F(Binhex, a_fork_that_cannot_be_written_ends_the_stream) {
    const std::string characters = slow_text(slow_runs(random_file(10, 10).stream())).substr(1);
    for (const bool data_fails : {true, false}) {
        SplitBHWorkArea work([] { return Bytes(); }, bytes_of(characters));
        tagBinhex_Header header{};
        const auto sink = [](bool works) { return [=](Bytes) { return works; }; };
        EXPECT_EQ(SplitBinHexForks(work, header, sink(!data_fails), sink(data_fails)), -1);
    }
}

TEST_F(Binhex, damage_leaves_no_file) {
    const MacFile mac = random_file(150, 40);
    const std::string text = mac.hqx();
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (at < text.rfind(':') - 2) {
            ASSERT_EQ(decoded(text.substr(0, at)).result, -1) << at;
        }
        std::string flipped = text;
        flipped[at] = static_cast<char>(flipped[at] ^ 1 << random_below(8));
        decoded(flipped);
    }
}

// Entries of id, offset and length; the first byte behind them is at 26 + 12 * their number.
std::string with_entries(const std::vector<std::array<std::size_t, 3>>& entries, const std::string& rest) {
    std::string text = std::string(24, '?') + big(entries.size(), 2);
    for (const auto& entry : entries) {
        for (const std::size_t number : entry) text += big(number, 4);
    }
    return text + rest;
}

TEST_F(Binhex, kept_apple_single_is_read_by_its_descriptors) {
    const std::string zeros(4, '\0');
    struct {
        const char* name;
        std::string file;
        MacFile mac;
    } const rows[] = {
        {"any order, others skipped, any magic",
         with_entries({{9, 86, 8}, {3, 94, 4}, {8, 0xFFFFFFFF, 0xFFFFFFFF}, {2, 98, 12}, {1, 110, 8}},
                      "TYPECREAnamethe resourcethe data"),
         {"name", "TYPE", "CREA", 0, "the data", "the resource"}},
        {"the last of two", with_entries({{1, 0, 5}, {1, 50, 3}}, "new"), {"", zeros, zeros, 0, "new", ""}},
        {"no entries", with_entries({}, "anything"), {"", zeros, zeros, 0, "", ""}},
        {"short Finder information", with_entries({{9, 38, 5}}, "TYPEC"), {"", "TYPE", "C\0\0\0"s, 0, "", ""}},
        {"name of 70", with_entries({{3, 38, 70}}, std::string(70, 'n')), {std::string(63, 'n'), zeros, zeros}},
        {"ends at the end", with_entries({{1, 38, 0}}, ""), {"", zeros, zeros, 0, "", ""}},
        {"all of 8192 bytes",
         with_entries(std::vector(680, std::array<std::size_t, 3>{}), std::string(6, '?')),
         {"", zeros, zeros, 0, "", ""}},
    };
    for (const auto& row : rows) EXPECT_EQ(encoded(row.file), (Made{0, row.mac.hqx(), ""})) << row.name;
}

TEST_F(Binhex, refuses_apple_single_that_is_wrong) {
    const std::pair<const char*, std::string> rows[] = {
        {"empty file", ""},
        {"cut before the count", std::string(25, '\0')},
        {"more descriptors than bytes", with_entries({{1, 0, 0}}, "").replace(24, 2, "\0\x02"s)},
        {"descriptors behind 8192 bytes", with_entries(std::vector(681, std::array<std::size_t, 3>{}), "")},
        {"65,535 descriptors", std::string(24, '\0') + "\xFF\xFF" + std::string(9000, '\0')},
        {"data behind the end", with_entries({{1, 38, 1}}, "")},
        {"resource of 2 GiB", with_entries({{2, 0, 0x80000000}}, "")},
        {"name whose end wraps", with_entries({{3, 0xFFFFFFFF, 2}}, "abc")},
        {"Finder information behind the end", with_entries({{9, 39, 32}}, std::string(32, 'f'))},
    };
    for (const auto& [name, file] : rows) EXPECT_EQ(encoded(file).result, -1) << name;
}

TEST_F(Binhex, a_full_disk_leaves_no_file) {
    const MacFile mac = random_file(200'000, 10'000);
    const std::string text = mac.hqx(), apple_single = mac.apple_single();
    for (const std::size_t missing : {std::size_t{1}, std::size_t{100}, text.size() - 60}) {
        EXPECT_EQ(decoded(text, apple_single.size() - missing).result, -1);
        EXPECT_EQ(encoded(apple_single, text.size() - missing).result, -1);
    }
    EXPECT_EQ(decoded(text, 50).result, -1);
}

TEST_F(Binhex, reads_as_many_bytes_of_a_file_or_pipe_as_it_is_told) {
    const MacFile mac = random_file(3000, 10);
    const std::string text = mac.hqx();
    const auto size = static_cast<long>(text.size());
    const int in = CreateFile(file("in", "skip" + text).c_str(), 1);
    const std::pair<long, int> rows[] = {{LONG_MAX, 0}, {size, 0}, {size / 2, -1}, {0, -1}, {-1, -1}};
    for (const auto& [count, result] : rows) {
        SetFilePointer(in, 4, nullptr, SEEK_SET);
        EXPECT_EQ(decoded_from(in, count).result, result) << count;
    }
    CloseHandle(in);

    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ASSERT_TRUE(write_all(ends[1], (text + "rest").data(), text.size() + 4));
    EXPECT_EQ(decoded_from(ends[0], size), (Made{0, mac.apple_single(), mac.name}));
    char rest[5];
    EXPECT_EQ(::read(ends[0], rest, sizeof rest), 4);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(Binhex, wrong_arguments_and_places_fail) {
    const std::string text = MacFile().hqx();
    const int in = CreateFile(file("text", text).c_str(), 1);
    EXPECT_EQ(ConvertBinHexToAS(in, LONG_MAX, nullptr, nullptr), -1);
    tagBinhex_Header header{};
    header.resourceLength = to_MAC_LONG(static_cast<uint32_t>(text.size() + 1));
    const int out = CreateFile(file("out", "").c_str(), 2);
    EXPECT_EQ(CombineBinhexRaw(header, in, 0, 0, out), -1) << "the input ends within a fork";
    CloseHandle(out);
    CloseHandle(in);
    EXPECT_EQ(decoded_from(-1, 100).result, -1);
    char* path = nullptr;
    EXPECT_EQ(ConvertASToBinHex(nullptr, &path), -1);
    EXPECT_EQ(ConvertASToBinHex("x", nullptr), -1);
    EXPECT_EQ(ConvertASToBinHex((directory() / "missing").c_str(), &path), -1);
    EXPECT_EQ(take_log(1).size(), 1u) << "the file layer's complaint";
    set("Gateway", "TemporaryDirectory", (directory() / "missing").c_str());
    EXPECT_EQ(decoded(text).result, -1);
    EXPECT_EQ(encoded(MacFile().apple_single()).result, -1);
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
