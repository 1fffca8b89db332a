#include "codec/base64_decoder.h"
#include "codec/base64_encoder.h"
#include "tests/codec/codec_calls.h"

namespace vel::test {
namespace {

using namespace std::string_literals;

class Base64 : public CodecTest {
  protected:
    void decodes(const char* name, std::string_view text, int result, const std::string& output) {
        SCOPED_TRACE(name);
        const auto outcome = run(counted(from64, static_cast<int32_t>(text.size())), text);
        EXPECT_EQ(outcome.result, result);
        if (result == 1) {
            EXPECT_EQ(outcome.output, output);
        }
        for (const std::size_t piece : {text.size() + 1, std::size_t{1}, std::size_t{3}}) {
            const auto [got, accepted] = fed<Base64Decoder>(bytes_of(text), piece);
            EXPECT_EQ(accepted, result == 1) << "in pieces of " << piece;
            EXPECT_EQ(got, output) << "in pieces of " << piece;
        }
    }
};

TEST_F(Base64, out64_pads) {
    char text[5] = "";
    const auto quantum = [&](int pad) { return out64(0xFB, 0xF0, 0x3F, pad, text), std::string(text); };
    EXPECT_EQ(quantum(0), "+/A/");
    EXPECT_EQ(quantum(1), "+/A=");
    EXPECT_EQ(quantum(2), "+/==");
}

TEST_F(Base64, encodes_in_lines_of_72) {
    EXPECT_EQ(run(to64, "").output, "\r\n");
    EXPECT_EQ(run(to64, "A"), (Outcome{0, 1, "QQ==\r\n"}));
    EXPECT_EQ(run(to64, "AB"), (Outcome{0, 2, "QUI=\r\n"}));
    EXPECT_EQ(run(to64, "ABC"), (Outcome{0, 3, "QUJD\r\n"}));
    EXPECT_EQ(run(to64, std::string(55, 'A')).output.substr(68), "QUFB\r\nQQ==\r\n");
}

TEST_F(Base64, kept_full_last_line_is_followed_by_an_empty_one) {
    EXPECT_EQ(run(to64, std::string(52, 'A')).output.substr(68), "QQ==\r\n\r\n");
    EXPECT_EQ(run(to64, std::string(53, 'A')).output.substr(68), "QUE=\r\n\r\n");
    EXPECT_EQ(run(to64, std::string(54, 'A')).output.substr(68), "QUFB\r\n\r\n");
    EXPECT_EQ(run(to64, std::string(108, 'A')).output.substr(142), "QUFB\r\n\r\n");
}

TEST_F(Base64, encodes_what_is_behind_the_offset) {
    const auto behind = [](int in, int out) { return SetFilePointer(in, 4, nullptr, SEEK_SET), to64(in, out); };
    EXPECT_EQ(run(behind, "skipABC"), (Outcome{0, 7, "QUJD\r\n"}));
}

TEST_F(Base64, decodes_strictly) {
    decodes("nothing", "", 1, "");
    decodes("a quantum", "QUJD", 1, "ABC");
    decodes("two lines", "QUJD\r\nQUJD\r\n", 1, "ABCABC");
    decodes("every space", "Q U\tJ\vD\f\r\nQ\nU\rJD", 1, "ABCABC");
    decodes("CR alone", "QUJD\rQUJDQUJD", 1, "ABCABCABC");
    decodes("line end within a quantum", "QUJDQ\r\nUJD", 1, "ABCABC");
    decodes("padded", "QUI=", 1, "AB");
    decodes("nothing counts behind the end", "QUI=!!!\xFF", 1, "AB");
    decodes("only padding", "====", 1, "");
    decodes("high bytes", "+/+/////", 1, "\xFB\xFF\xBF\xFF\xFF\xFF");
    decodes("outside the alphabet", "QUJD!", -1, "ABC");
    decodes("a lone first character", "!", -1, "");
    decodes("byte above 127", "QUJD\xC1UJD", -1, "ABC");
    decodes("byte 160 is no space", "QUJD\xA0", -1, "ABC");
    decodes("DEL", "QUJD\x7F", -1, "ABC");
}

TEST_F(Base64, kept_hyphen_and_nul_end_the_text) {
    decodes("delimiter line", "QUJD\r\n--boundary!", 1, "ABC");
    decodes("NUL", "QUJD\0!!!"s, 1, "ABC");
}

TEST_F(Base64, kept_cut_quantum_yields_what_it_can) {
    decodes("one character", "QUJDQ", 1, "ABC");
    decodes("two", "QUJDQU", 1, "ABCA");
    decodes("three", "QUJDQUJ", 1, "ABCAB");
}

TEST_F(Base64, count_is_used_up_exactly) {
    EXPECT_EQ(run(counted(from64, 4), "QUJDQUJD").output, "ABC");
    EXPECT_EQ(run(counted(from64, 4), "QUJ").result, -1) << "the input ends before its count";
    EXPECT_EQ(run(counted(from64, 4), "QU=").result, 1) << "the text ends before the input does";
    EXPECT_EQ(run(counted(from64, 343), std::string(342, 'A') + "!").output, "") << "256 bytes are held back";
    EXPECT_EQ(run(counted(from64, 0), "QUJD"), (Outcome{1, 0, ""}));
    EXPECT_EQ(run(counted(from64, -1), "QUJD"), (Outcome{1, 0, ""}));
}

TEST_F(Base64, equals_the_slow_one) {
    const std::vector<std::string> clean = {"QUJD", "/+9z", "\r\n", "Q", "zz", " "};
    std::vector<std::string> dirty = clean;
    dirty.insert(dirty.end(), 150, "////");
    dirty.insert(dirty.end(), {"=", "-", "!", "\xE9", std::string(1, '\0')});
    for (int round = 0; round < 240; ++round) {
        const std::string text = random_text(round % 2 ? clean : dirty, random_below(round % 8 ? 1000 : 80'000));
        const std::size_t count = random_below(text.size() + text.size() / 8 + 2);
        const std::size_t disk = round % 4 ? kEndless : random_below(text.size() + 1);
        EXPECT_EQ(run(counted(from64, static_cast<int32_t>(count)), text, disk), slow(slow_from64, text, count, disk));
    }
}

TEST_F(Base64, a_big_file_comes_back) {
    const std::string bytes = random_bytes(200'000);
    const Outcome encoded = run(to64, bytes);
    EXPECT_EQ(encoded, (Outcome{0, bytes.size(), fed_text<Base64Encoder>(bytes, 1)}));
    EXPECT_EQ(run(counted(from64, static_cast<int32_t>(encoded.output.size())), encoded.output).output, bytes);
}

}  // namespace
}  // namespace vel::test
