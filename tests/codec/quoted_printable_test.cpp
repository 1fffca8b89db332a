#include "codec/qp_decoder.h"
#include "codec/qp_encoder.h"
#include "tests/codec/codec_calls.h"

namespace vel::test {
namespace {

using namespace std::string_literals;

class QuotedPrintable : public CodecTest {
  protected:
    // Both text encoders must agree.
    void encodes(const char* name, std::string_view text, const std::string& output) {
        SCOPED_TRACE(name);
        EXPECT_EQ(run(textToQp, text), (Outcome{1, text.size(), output}));
        EXPECT_EQ(v2(text), output);
        EXPECT_EQ(fed_text<QpEncoder<kQpText>>(text, 1), output);
    }

    std::string v2(std::string_view text) {
        VEL_FILE* in = FileOpen(file("v2-in", text).c_str(), 1);
        VEL_FILE* out = FileCreate(file("v2-out", "").c_str());
        EXPECT_EQ(textToQp_v2(in, out), 1);
        EXPECT_EQ(GetFilePos(in), static_cast<int>(text.size()));
        const int written = GetFilePos(out);
        FileClose(in);
        FileClose(out);
        const std::string output = content((directory() / "v2-out").string());
        EXPECT_EQ(written, static_cast<int>(output.size()));
        return output;
    }

    void decodes(const char* name, std::string_view text, int result, const std::string& output) {
        SCOPED_TRACE(name);
        const auto outcome = run(counted(fromqp, static_cast<int32_t>(text.size())), text);
        EXPECT_EQ(outcome.result, result);
        if (result == 1) {
            EXPECT_EQ(outcome.output, output);
        }
        for (const std::size_t piece : {1, 2, 3}) {
            const auto [got, accepted] = fed<QpDecoder>(bytes_of(text), piece);
            EXPECT_EQ(got, output) << "in pieces of " << piece;
            EXPECT_EQ(accepted, result == 1) << "in pieces of " << piece;
        }
    }

    const std::vector<std::string> pieces_ = {"\r\n",
                                              "\r\n",
                                              "\r",
                                              "\n",
                                              "From ",
                                              "F",
                                              "Fro",
                                              "From",
                                              ".",
                                              " ",
                                              "\t",
                                              "=",
                                              "=4",
                                              "1",
                                              "a",
                                              "\xE9",
                                              "=\r\n",
                                              "=C3=a9",
                                              "=0D",
                                              "words that go on",
                                              "and DEL \x7F is",
                                              std::string(71, 'x'),
                                              std::string(1, '\0')};
};

TEST_F(QuotedPrintable, text_is_encoded) {
    encodes("blank before a line end", "a \r\nb", "a =\r\n\r\nb=\r\n\r\n");
    encodes("tab before a line end", "a\t\r\n", "a\t=\r\n\r\n\r\n");
    encodes("bytes that are escaped", "\x1F\x7F\x80\xFF=~"s, "=1F=7F=80=FF=3D~=\r\n\r\n");
    encodes("NUL", "a\0b"s, "a=00b=\r\n\r\n");
    encodes("dot at the beginning", "..\r\n.", "=2E.\r\n=2E=\r\n\r\n");
    encodes("From at the beginning", "x\r\nFrom me", "x\r\n=46rom me=\r\n\r\n");
    encodes("blank behind From", "x\r\nFrom \r\n", "x\r\n=46rom =\r\n\r\n\r\n");
    encodes("parts of From", "\r\nF.\r\nFr\r\nFroFrom \r\nFromage\r\nFFrom ",
            "\r\nF.\r\nFr\r\nFroFrom =\r\n\r\nFromage\r\nFFrom =\r\n\r\n");
    encodes("From within a line", "x From y", "x From y=\r\n\r\n");
    const std::string full(73, 'x');
    encodes("soft break", full + "y", full + "=\r\ny=\r\n\r\n");
    encodes("line as long as can be", full + "\r\n", full + "=\r\n\r\n\r\n");
    encodes("From behind a soft break", full + "From ", full + "=\r\n=46rom =\r\n\r\n");
    encodes("escape at the end of a line", std::string(72, 'x') + "\xE9", std::string(72, 'x') + "=E9=\r\n\r\n");
}

TEST_F(QuotedPrintable, kept_line_break_is_written_at_the_end) {
    encodes("nothing", "", "\r\n");
    encodes("a line", "a\r\n", "a\r\n\r\n");
    encodes("no line end", "a", "a=\r\n\r\n");
}

TEST_F(QuotedPrintable, kept_from_on_the_first_line_is_not_guarded) {
    encodes("first line", "From me", "From me=\r\n\r\n");
}

TEST_F(QuotedPrintable, kept_lone_line_feed_is_escaped_and_moves_no_column) {
    encodes("no line start", "x\nFrom me", "x=0AFrom me=\r\n\r\n");
    encodes("column 0 stays", "\n\n", "=0A=0A\r\n");
    const std::string line(70, 'x');
    encodes("no soft break", line + "\n\n\n\r\n", line + "=0A=0A=0A\r\n\r\n");
    encodes("From behind it is at the beginning still", "\r\n\nFrom ", "\r\n=0A=46rom =\r\n\r\n");
}

TEST_F(QuotedPrintable, kept_carriage_return_is_held_back) {
    encodes("dropped at the end", "a\r", "a=\r\n\r\n");
    encodes("before another byte", "a\rb", "a=0Db=\r\n\r\n");
    encodes("two of them", "a\r\r\n", "a=0D\r\n\r\n");
    encodes("what stood before it counts", "a \r\r\n", "a =0D=\r\n\r\n\r\n");
    encodes("a dot behind it", "\r.", "=0D=2E=\r\n\r\n");
    encodes("From behind it", "\r\n\rFrom ", "\r\n=0D=46rom =\r\n\r\n");
    std::string escapes;
    for (int i = 0; i < 25; ++i) escapes += "=0D";
    encodes("no soft break before From", "\r\n" + std::string(25, '\r') + "From me",
            "\r\n" + escapes + "=46rom=\r\n me=\r\n\r\n");
    const std::string line(72, 'x');
    encodes("a line past 76", line + "\r\xE9z", line + "=0D=E9=\r\nz=\r\n\r\n");
}

TEST_F(QuotedPrintable, kept_text_that_ends_within_from_fails_in_one_encoder) {
    for (const std::string_view text : {"\r\nF", "\r\nFr", "\r\nFro", "\r\nFrom"}) {
        EXPECT_EQ(run(textToQp, text).result, -1) << text;
        EXPECT_EQ(v2(text), std::string(text) + "=\r\n\r\n");
    }
    EXPECT_EQ(run(textToQp, "\r\nFrom ").result, 1);
}

TEST_F(QuotedPrintable, records_that_fail_are_told) {
    VEL_FILE* folder = FileOpen(directory().c_str(), 1);
    VEL_FILE* text = FileOpen(file("text", std::string(9000, 'x')).c_str(), 1);
    VEL_FILE* full = FileOpen("/dev/full", 2);
    EXPECT_EQ(textToQp_v2(nullptr, full), -1);
    EXPECT_EQ(textToQp_v2(text, nullptr), -1);
    EXPECT_EQ(textToQp_v2(text, full), -1);
    VEL_FILE* out = FileCreate(file("out", "").c_str());
    EXPECT_EQ(textToQp_v2(folder, out), -1);
    EXPECT_EQ(take_log(1), std::vector<std::string>{"inch: ReadFile failed."});
    for (VEL_FILE* opened : {folder, text, full, out}) FileClose(opened);
}

TEST_F(QuotedPrintable, binary_is_encoded) {
    const auto encoded = [&](std::string_view bytes) { return run(binaryToQp, bytes).output; };
    EXPECT_EQ(encoded(""), "\r\n");
    EXPECT_EQ(encoded("a b\r\n\t=\x7F\x80!~"), "a=20b=0D=0A=09=3D=7F=80!~=\r\n\r\n");
    EXPECT_EQ(encoded(".."), "=2E.=\r\n\r\n");
    EXPECT_EQ(encoded(std::string(73, 'x')), std::string(73, 'x') + "=\r\n\r\n");
    EXPECT_EQ(encoded("a\r\nFrom"), "a=0D=0AFrom=\r\n\r\n");
    const auto behind = [](int in, int out) { return SetFilePointer(in, 4, nullptr, SEEK_SET), binaryToQp(in, out); };
    EXPECT_EQ(run(behind, "skip a"), (Outcome{1, 6, "=20a=\r\n\r\n"}));
}

TEST_F(QuotedPrintable, text_is_decoded) {
    decodes("nothing", "", 1, "");
    decodes("escapes in either case", "=41=c3=A9", 1, "A\xC3\xA9");
    decodes("soft break", "=41=\r\nB\r\n", 1, "AB");
    decodes("line ends", "a\r\nb\r\nc", 1, "a\r\nb\r\nc");
    decodes("empty lines", "\r\n\r\na", 1, "\r\n\r\na");
    decodes("bytes as they are", "a\tb \x80\0\xFF"s, 1, "a\tb \x80\0\xFF"s);
    decodes("equals last", "a=", 1, "a");
    decodes("one digit", "a=4", 0, "a");
    decodes("half a soft break", "a=\r", 0, "a");
}

TEST_F(QuotedPrintable, kept_final_line_break_is_dropped) {
    decodes("one", "a\r\n", 1, "a");
    decodes("the last of two", "a\r\n\r\n", 1, "a\r\n");
    decodes("before the last equals it is none", "a\r\n=", 1, "a\r\n");
    decodes("nor before a CR", "a\r\n\r", 1, "a\r\n");
}

TEST_F(QuotedPrintable, kept_line_ends_are_made_crlf) {
    decodes("LF alone", "a\nb", 1, "a\r\nb");
    decodes("CR is dropped", "a\rb\r\r\nc", 1, "ab\r\nc");
}

TEST_F(QuotedPrintable, kept_blanks_before_a_line_end_stay) {
    decodes("before line ends", "a \t\r\n \nb\t", 1, "a \t\r\n \r\nb\t");
    decodes("before a soft break", "a =\r\nb", 1, "a b");
}

TEST_F(QuotedPrintable, kept_bad_escapes_yield_ff) {
    decodes("no digits", "=zzb", 1,
            "\xFF"
            "b");
    decodes("second is none", "=4z", 1, "\xFF");
    decodes("above 127", "=\xC3\xA9", 1, "\xFF");
    decodes("LF is no soft break", "=\nab", 1,
            "\xFF"
            "b");
    decodes("behind CR anything goes", "=\rab", 1, "b");
}

TEST_F(QuotedPrintable, count_is_used_up_exactly) {
    EXPECT_EQ(run(counted(fromqp, 3), "abcdef").output, "abc");
    EXPECT_EQ(run(counted(fromqp, 2), "=41").result, 0) << "between the digits";
    EXPECT_EQ(run(counted(fromqp, 9), "abc").result, -1) << "a character is due";
    EXPECT_EQ(run(counted(fromqp, 9), "abc="), (Outcome{1, 4, "abc"})) << "none is";
    EXPECT_EQ(run(counted(fromqp, 9), "abc=4").result, 0);
    EXPECT_EQ(run(counted(fromqp, 0), "abc"), (Outcome{1, 0, ""}));
    EXPECT_EQ(run(counted(fromqp, -1), "abc"), (Outcome{1, 0, ""}));
}

TEST_F(QuotedPrintable, full_disk_tells_what_did_not_fit) {
    const auto decoded = [&](const std::string& text, std::size_t disk) {
        return run(counted(fromqp, static_cast<int32_t>(text.size())), text, disk).result;
    };
    std::string escapes;
    for (int i = 0; i < 600; ++i) escapes += "=41";
    EXPECT_EQ(decoded(std::string(600, 'x'), 0), -1) << "a plain byte";
    EXPECT_EQ(decoded(escapes, 0), 0) << "a decoded byte";
    EXPECT_EQ(decoded(escapes, 513), -1) << "the last piece";
    EXPECT_EQ(decoded(std::string(256, 'x') + escapes, 255), 0) << "found at the byte behind a full buffer";
    EXPECT_EQ(decoded(escapes.substr(0, 768) + std::string(600, 'x'), 100), -1);
}

TEST_F(QuotedPrintable, equals_the_slow_one) {
    const auto slow_text = [](SlowInput& in, SlowOutput& out) { return slow_text_to_qp(in, out, true); };
    for (int round = 0; round < 240; ++round) {
        const std::string text = random_text(pieces_, random_below(round % 8 ? 1000 : 80'000));
        const std::size_t count = random_below(text.size() + text.size() / 8 + 2);
        const std::size_t disk = round % 4 ? kEndless : random_below(text.size() + 1);
        EXPECT_EQ(run(counted(fromqp, static_cast<int32_t>(count)), text, disk), slow(slow_fromqp, text, count, disk));
        EXPECT_EQ(run(textToQp, text, disk), slow(slow_text, text, text.size(), disk));
        EXPECT_EQ(run(binaryToQp, text, disk), slow(slow_binary_to_qp, text, text.size(), disk));
        SlowInput in(text, text.size());
        SlowOutput out;
        slow_text_to_qp(in, out, false);
        EXPECT_EQ(v2(text), out.file);
    }
}

}  // namespace
}  // namespace vel::test
