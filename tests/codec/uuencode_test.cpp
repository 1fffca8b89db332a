#include "codec/uu_begin.h"
#include "codec/uu_decoder.h"
#include "codec/uu_encoder.h"
#include "tests/codec/codec_calls.h"

namespace vel::test {
namespace {

using namespace std::string_literals;

const std::string kBegin = "begin 644 n\r\n";

class Uuencode : public CodecTest {
  protected:
    static Call encode(const char* name = "n", const char* mode = "644") {
        return [=](int in, int out) { return uuencode(in, out, name, mode); };
    }

    // The name that was stored is left in name_; "-" when there was none.
    Call decode(int32_t limit = 0) {
        return [this, limit](int in, int out) {
            char* name = nullptr;
            const int result = uudecode(in, limit, out, &name);
            name_ = name ? name : "-";
            std::free(name);
            return result;
        };
    }

    void decodes(const char* what, const std::string& lines, int result, const std::string& output) {
        SCOPED_TRACE(what);
        const auto outcome = run(decode(), kBegin + lines);
        EXPECT_EQ(outcome.result, result);
        EXPECT_EQ(outcome.output, output);
        EXPECT_EQ(name_, "n");
    }

    std::string name_;
};

TEST_F(Uuencode, begin_lines) {
    struct {
        const char* line;
        const char* name;  // null: no begin line
    } const rows[] = {
        {"begin 644 a.txt", "a.txt"},
        {"BeGiN 0 a\r\n", "a"},
        {"begin 644 a\n", "a"},
        {"begin 644 a b.txt\r\n", "a b.txt"},
        {"begin   644  a ", " a "},
        {"begin 644", ""},
        {"begin 644 \r\n", ""},
        {"begin", nullptr},
        {"begin \r\n", nullptr},
        {"begin\r644 a", nullptr},
        {"beginning 644 a", nullptr},
        {"BEGIN 64x name", nullptr},
        {"begin\t644 a", nullptr},
        {"begin -644 a", nullptr},
        {" begin 644 a", nullptr},
        {"begi", nullptr},
        {"", nullptr},
    };
    for (const auto& row : rows) {
        char name[256] = "untouched";
        EXPECT_EQ(IsuuencodeBegin(exact(row.line).get(), name), row.name != nullptr) << row.line;
        EXPECT_STREQ(name, row.name ? row.name : "untouched") << row.line;
        EXPECT_EQ(IsuuencodeBegin(row.line, nullptr), row.name != nullptr) << row.line;
    }
    EXPECT_EQ(IsuuencodeBegin(nullptr, nullptr), 0);
    char name[256];
    EXPECT_EQ(IsuuencodeBegin(("begin 1 " + std::string(300, 'x')).c_str(), name), 1);
    EXPECT_EQ(name, std::string(255, 'x'));
}

TEST_F(Uuencode, kept_a_mode_may_have_any_digits) {
    char name[256];
    for (const char* line : {"begin 999 a b", "begin 8 a b", "begin 12345678901234567890 a b"}) {
        EXPECT_EQ(IsuuencodeBegin(line, name), 1) << line;
        EXPECT_STREQ(name, "a b") << line;
    }
}

TEST_F(Uuencode, encodes) {
    EXPECT_EQ(run(encode(nullptr, nullptr), ""), (Outcome{1, 0, "begin 644 unknown.dat \r\n`\r\nend\r\n\r\n"}));
    EXPECT_EQ(run(encode("a b", "666"), "Cat"), (Outcome{1, 3, "begin 666 a b \r\n#0V%T\r\n`\r\nend\r\n\r\n"}));
    EXPECT_EQ(run(encode(), "\0\0\0"s).output, "begin 644 n \r\n#````\r\n`\r\nend\r\n\r\n");
    std::string line = "M";
    for (int i = 0; i < 15; ++i) line += "04%!";
    EXPECT_EQ(run(encode(), std::string(45, 'A')).output, "begin 644 n \r\n" + line + "\r\n`\r\nend\r\n\r\n");
}

TEST_F(Uuencode, kept_pad_bytes_are_those_of_the_line_before) {
    EXPECT_EQ(fed_text<UuEncoder>("A", 1), "!00``\r\n`\r\nend\r\n\r\n") << "zero at the start";
    const std::string text = fed_text<UuEncoder>(std::string(45, 'B') + "A", 7);
    EXPECT_EQ(text.substr(63), "!04)\"\r\n`\r\nend\r\n\r\n");
}

TEST_F(Uuencode, writes_one_path_to_a_buffered_file) {
    const std::string path = file("buffered", "");
    const int in = CreateFile(file("in", std::string(9000, 'x')).c_str(), 1);
    const int out = filecreate(path.c_str(), 2, 1);
    EXPECT_EQ(putline(out, "before\r\n"), 1);
    EXPECT_EQ(uuencode(in, out, "n", "644"), 1);
    EXPECT_EQ(putline(out, "behind\r\n"), 1);
    fileclose(in);
    fileclose(out);
    EXPECT_EQ(content(path),
              "before\r\nbegin 644 n \r\n" + fed_text<UuEncoder>(std::string(9000, 'x'), 9000) + "behind\r\n");
}

TEST_F(Uuencode, decodes) {
    decodes("a file", "#0V%T\r\n`\r\nend\r\n", 1, "Cat");
    decodes("blank for zero", "#    \r\n \r\nend\r\n", 1, "\0\0\0"s);
    decodes("no zero line", "#0V%T\r\nEND  \r\n", 1, "Cat");
    decodes("empty line for zero line", "#0V%T\r\n\r\nend\r\n", 1, "Cat");
    decodes("LF for line ends", "#0V%T\n`\nend\n", 1, "Cat");
    decodes("no line end behind end", "#0V%T\r\n`\r\nend", 1, "Cat");
    decodes("no end line", "#0V%T\r\n", 0, "Cat");
    decodes("other text behind the zero line", "#0V%T\r\n`\r\nendnote\r\nend\r\n", 0, "Cat");
    decodes("another file begins", "#0V%T\r\nbegin 644 x\r\n#0V%T\r\n`\r\nend\r\n", 0, "Cat");
    decodes("more than the count takes", "!0V%TXYZ\r\n`\r\nend\r\n", 1, "C");
    decodes("checksum behind the data", "#0V%Tx\r\n`\r\nend\r\n", 1, "Cat");
    decodes("nothing behind the begin line", "", 0, "");
}

TEST_F(Uuencode, shortened_lines_decode_as_zeros) {
    decodes("blanks lost", "#0V\r\n`\r\nend\r\n", 1, "C`\0"s);
    decodes("nothing but the count", "#\r\n`\r\nend\r\n", 1, "\0\0\0"s);
    decodes("of two characters with LF", "\"\n`\r\nend\r\n", 1, "\0\0"s);
    decodes("the count alone at the end of the file", "_", 0, std::string(63, '\0'));
    decodes("the most bytes", "_" + std::string(84, '_') + "\r\n`\r\nend\r\n", 1, std::string(63, '\xFF'));
}

TEST_F(Uuencode, kept_any_character_stands_for_its_low_six_bits) {
    decodes("LF alone", "#0V%T\n\nend\n", 1, "Cat" + std::string(42, '\0'));
    decodes("LF alone at the end of the file", "\n", 0, std::string(42, '\0'));
    decodes("codes of no printed character", "c\xB0\x96\xA5\x14\r\n\xA0\r\nend\r\n", 1, "Cat");
}

TEST_F(Uuencode, kept_end_and_other_text_is_data) {
    decodes("endnote", "endnote\r\n#0V%T\r\n`\r\nend\r\n", 0, "8C\x8FPPCat");
    decodes("no end line counts", "endnote\r\nend\r\n", 0, "8C\x8FPP8@\0\0\0"s);
}

TEST_F(Uuencode, kept_blank_behind_the_name_belongs_to_it) {
    const Outcome encoded = run(encode("x.bin"), "Cat");
    EXPECT_EQ(run(decode(), encoded.output).output, "Cat");
    EXPECT_EQ(name_, "x.bin ");
}

TEST_F(Uuencode, limit_counts_whole_lines) {
    const std::string text = "prose\r\n" + kBegin + "#0V%T\r\n#0V%T\r\n`\r\nend\r\n";
    struct {
        const char* name;
        int32_t limit;
        int result;
        const char* output;
        const char* stored;
    } const rows[] = {
        {"none", 0, 1, "CatCat", "n"},
        {"below 0", -1, 0, "", "-"},
        {"before the begin line", 6, 0, "", "-"},
        {"used up before the begin line", 7, 0, "", "-"},
        {"within the begin line", 19, 0, "", "-"},
        {"behind the begin line", 20, 0, "", "n"},
        {"within a data line", 21, 0, "Cat", "n"},
        {"behind a data line", 27, 0, "Cat", "n"},
        {"behind the data", 34, 0, "CatCat", "n"},
        {"two bytes behind the zero line", 39, 0, "CatCat", "n"},
        {"three bytes behind it", 40, 1, "CatCat", "n"},
        {"all", 42, 1, "CatCat", "n"},
    };
    for (const auto& row : rows) {
        const auto outcome = run(decode(row.limit), text);
        EXPECT_EQ(outcome.result, row.result) << row.name;
        EXPECT_EQ(outcome.output, row.output) << row.name;
        EXPECT_EQ(name_, row.stored) << row.name;
    }
    EXPECT_EQ(run(decode(), "begin 644\r\n`\r\nend\r\n").result, 1);
    EXPECT_EQ(name_, "-") << "an empty name is not stored";
}

TEST_F(Uuencode, handles_of_lines_are_pooled_ones) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    EXPECT_EQ(uuencode(-1, ends[1], "n", "644"), 0);
    char* name = nullptr;
    EXPECT_EQ(uudecode(ends[0], 0, ends[1], &name), 0);
    EXPECT_EQ(name, nullptr);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(Uuencode, a_big_file_comes_back) {
    const std::string bytes = random_bytes(200'000);
    const Outcome encoded = run(encode(), bytes);
    EXPECT_EQ(encoded.offset, bytes.size());
    EXPECT_EQ(run(decode(), encoded.output).output, bytes);
}

}  // namespace
}  // namespace vel::test
