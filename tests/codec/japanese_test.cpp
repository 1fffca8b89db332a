#include "vel/japanese.h"

#include "tests/codec/fed.h"
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

TEST(Japanese, half_width_katakana_become_full_width) {
    std::string katakana;
    for (int byte = 0xA1; byte <= 0xDF; ++byte) katakana += static_cast<char>(byte);
    const std::string full =
        "!#!V!W!\"!&%r%!%#%%%'%)%c%e%g%C!<%\"%$%&%(%*%+%-%/"
        "%1%3%5%7%9%;%=%?%A%D%F%H%J%K%L%M%N%O%R%U%X%[%^%_%`%a%b%d%f%h%i%j%k%l%m%o%s!+!,";
    converts<JisEncoder>({
        {"in the order of JIS X 0201", katakana, "\x1B$B" + full + "\x1B(J"},
        {"voiced", "\xB3\xDE\xB6\xDE\xC4\xDE\xCA\xDE\xCE\xDE", "\x1B$B%t%,%I%P%\\\x1B(J"},
        {"semi-voiced", "\xCA\xDF\xCE\xDF", "\x1B$B%Q%]\x1B(J"},
        {"without a voice", "\xB2\xDE\xB5\xDE\xC5\xDE\xC9\xDE", "\x1B$B%$!+%*!+%J!+%N!+\x1B(J"},
        {"nor a semi-voice", "\xB3\xDF\xB6\xDF\xC9\xDF\xCF\xDF", "\x1B$B%&!,%+!,%N!,%^!,\x1B(J"},
    });
}

TEST(Japanese, encodes) {
    converts<JisEncoder>({
        {"ASCII and NUL", "a\0~\r\n"s, "a\0~\r\n"s},
        {"two lines", "\x88\x9F\x82\xA0\r\n\x82\xA0", "\x1B$B0!$\"\x1B(J\r\n\x1B$B$\"\x1B(J"},
        {"the borders of lead and trail bytes", "a\x81@\x9F\xFC\xE0@\xEF\xFC", "a\x1B$B!!^~_!~~\x1B(J"},
        {"a trail byte like a backslash", "x\x83\x5Cy", "x\x1B$B%=\x1B(Jy"},
        {"katakana at the end", "a\xB6", "a\x1B$B%+\x1B(J"},
        {"katakana before a character", "\xB6\x88\x9F", "\x1B$B%+0!\x1B(J"},
        {"a lead byte and no trail byte", "a\x81?b\x81\xFD\x82\xA0", "a\x81?b\x81\xFD\x1B$B$\"\x1B(J"},
        {"bytes of no class", "a\x80\xA0\xF0\xFFz", "a\x80\xA0\xF0\xFFz"},
        {"a lone lead byte", "\x81", "\x81"},
        {"a lone lead byte at the end", "\x82\xA0\x81", "\x1B$B$\"\x1B(J\x81"},
    });
    converts<MarkingEncoder>({{"marks", "a\x80\x82\xA0\xFF\x82\xA0\x81 \xF0\xB6",
                               "a<?>\x1B$B$\"\x1B(J<?>\x1B$B$\"\x1B(J<?> <?>\x1B$B%+\x1B(J"}});
}

TEST(Japanese, kept_a_first_lead_byte_takes_any_byte) {
    converts<JisEncoder>({{"a blank", "\x81 \x81 ", "\x1B$B!\x01\x1B(J\x81 "},
                          {"not behind a character", "\x88\x9F\x81 ", "\x1B$B0!\x1B(J\x81 "}});
    converts<MarkingEncoder>({{"CR", "\x88\r\n", "\x1B$B/\xEE\x1B(J\n"}});
}

TEST(Japanese, kept_text_closes_with_jis_x_0201) { converts<JisEncoder>({{"the end", "\x88\x9F", "\x1B$B0!\x1B(J"}}); }

TEST(Japanese, kept_the_last_byte_is_never_marked) {
    converts<MarkingEncoder>(
        {{"no class", "a\xFF\xFF", "a<?>\xFF"}, {"a lead byte", "\xB6\x81", "\x1B$B%+\x1B(J\x81"}});
}

TEST(Japanese, kept_nul_behind_half_width_katakana_is_lost) {
    converts<JisEncoder>({{"NUL", "\xB6\0\0\xB6\0"s, "\x1B$B%+\x1B(J\0\x1B$B%+\x1B(J"s}});
}

TEST(Japanese, kept_pairs_are_computed_and_not_looked_up) {
    converts<JisDecoder>({{"blanks", "\x1B$B  \x1B(B", "\x80\x9E"}});
    converts<JisEncoder>({{"DEL", "\x81\x7F", "\x1B$B!`\x1B(J"}});
}

TEST(Japanese, decodes) {
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

TEST(Japanese, kept_double_byte_text_goes_on_behind_a_line_end) {
    converts<JisDecoder>({{"two lines", "\x1B$B0!\r\n0!\x1B(B", "\x88\x9F\r\n\x88\x9F"}});
}

TEST(Japanese, kept_unknown_escape_sequences_are_dropped) {
    converts<JisDecoder>({
        {"the mode stays", "\x1B$B\x1B$A0!\x1B(I0!\x1B(J\x1B$Ax\x1B(Iyz", "\x88\x9F\x88\x9Fxyz"},
        {"double-byte text ends", "\x1B$B\x1BNx0!\x1BNy", "x0!y"},
        {"ESC is written", "\x1BN\x1B$B", "\x1B$B"},
    });
}

TEST(Japanese, kept_a_lone_cr_ends_a_line) {
    converts<JisDecoder>({{"text", "a\rb\r\r\nc", "a\r\nb\r\n\r\nc"}, {"a pair", "\x1B$B0\r0!", "0\r\n\x88\x9F"}});
}

TEST(Japanese, repairs) {
    converts<RepairingDecoder>({
        {"both are damaged", "a $B0!0!(Jx\r\n", "a \x88\x9F\x88\x9Fx\r\n"},
        {"the older opener, the newer closer", "$@0!(Bx", "\x88\x9Fx"},
        {"behind another dollar", "$$B0!(B", "$\x88\x9F"},
        {"no opener", "$C0!(B$", "$C0!(B$"},
        {"an intact closer", "$B0!\x1B(Jx", "\x88\x9Fx"},
        {"an intact closer in a pair", "$B0!X\x1B(J", "\x88\x9FX"},
        {"a closer in a pair is none", "$B0!0(J!(B", "\x88\x9F\x88\xA6\x95\x9F"},
        {"a closer needs a pair before it", "$B(J0!(J", "\x84\xC8\x88\x9F"},
        {"an intact opener ends the search", "$BAR \x1B$B0!\x1B(J.\n", "$BAR \x88\x9F.\n"},
        {"so does any other sequence", "$BAR\x1B(I.\x1BNx\n", "$BAR.x\n"},
        {"twice on a line", "$B0!(B-$B0!(B", "\x88\x9F-\x88\x9F"},
        {"not in double-byte text", "\x1B$B$B$B(J\x1B(J", "\x82\xC0\x82\xC0\x84\xC8"},
    });
    converts<JisDecoder>({{"not asked for", "$B0!(Jx\r$B0!(Jx", "$B0!(Jx\r\n$B0!(Jx"}});
}

TEST(Japanese, kept_a_failed_repair_ends_its_line_in_crlf) {
    converts<RepairingDecoder>({
        {"CR LF", "$Bill\r\na", "$Bill\r\na"},
        {"LF, with sequences cut", "$Bill\x1B\n$Bill\x1B(\na", "$Bill\r\n$Bill\r\na"},
        {"the end", "US$B", "US$B\r\n"},
    });
    const std::string reach = "$B" + std::string(JisDecoder::kMostHeld - 4, '!');
    EXPECT_EQ(fed_text<RepairingDecoder>(reach + "(B\n", 999), fed_text<JisDecoder>("\x1B" + reach, 999) + "\n");
    EXPECT_EQ(fed_text<RepairingDecoder>(reach + "!!(B\n", 999), reach + "!!(B\r\n") << "too far";
}

}  // namespace
}  // namespace vel::test
