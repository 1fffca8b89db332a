// What a codec encodes comes back: random text of every length, but for what a row says.
#include "codec/base64_decoder.h"
#include "codec/base64_encoder.h"
#include "codec/binhex_encoder.h"
#include "codec/qp_decoder.h"
#include "codec/qp_encoder.h"
#include "codec/uu_decoder.h"
#include "codec/uu_encoder.h"
#include "tests/codec/binhex_split.h"
#include "tests/codec/codec_calls.h"
#include "tests/codec/japanese_codecs.h"
#include "tests/codec/mac_file.h"
#include "vel/words.h"

namespace vel::test {
namespace {

using Pieces = std::vector<std::string>;

// Of a list whose items are parted by "|".
Pieces pieces_of(std::string_view list) {
    Pieces pieces;
    for (std::size_t end; (end = list.find('|')) != list.npos; list.remove_prefix(end + 1)) {
        pieces.emplace_back(list.substr(0, end));
    }
    pieces.emplace_back(list);
    return pieces;
}

Pieces any_bytes_and(Pieces pieces) {
    for (int byte = 0; byte < 256; ++byte) pieces.emplace_back(1, static_cast<char>(byte));
    return pieces;
}

struct Codec {
    const char* name;
    Pieces pieces;  // of which texts are made

    // The text encoded and decoded, by so many bytes at a time.
    std::string (*back)(const std::string& text, std::size_t size);

    // What is to come back.
    std::string (*kept)(std::string text) = [](std::string text) { return text; };
};

// ---- Bodies

template <class Encoder, class Decoder>
std::string through(const std::string& text, std::size_t size) {
    const std::string encoded = fed_text<Encoder>(text, size);
    EXPECT_EQ(encoded, fed_text<Encoder>(text, text.size() + 1));
    return fed_text<Decoder>(encoded, size);
}

std::string through_uuencode(const std::string& text, std::size_t size) {
    const std::string encoded = fed_text<UuEncoder>(text, size);
    EXPECT_EQ(encoded, fed_text<UuEncoder>(text, text.size() + 1));
    UuDecoder decoder;
    std::string decoded;
    for (std::string_view rest = encoded; !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find('\n') + 1);
        append_written(decoded, UuDecoder::kRoom, [&](Cursor& out) { decoder.take(line, out); });
        rest.remove_prefix(line.size());
    }
    return decoded;
}

// The text as two forks.
std::string through_binhex(const std::string& text, std::size_t size) {
    MacFile mac;
    mac.data = text.substr(0, text.size() * size / 80);
    mac.resource = text.substr(mac.data.size());
    const SplitFile back = split(kBanner + ":" + fed_text<BinhexEncoder>(mac.stream(), size), size);
    EXPECT_EQ(back, (SplitFile{kBinhexDone, mac.name, mac.data, mac.resource}));
    return back.data + back.resource;
}

const Pieces kRunPieces = {
    "\x90", "\x90\x90", "\0"s, "a", "a", "aaa", "b\xFF", std::string(254, 'r'), std::string(400, 'r')};

std::string without_last_cr(std::string text) {
    if (text.ends_with('\r')) text.pop_back();
    return text;
}

const Pieces kLinePieces = pieces_of(
    "\r\n|\r\n|From |Fro|F| |\t|.|=4|=C3=a9|=0D\r\n|=\r\n|words that go on|"
    "longwordlongwordlongwordlongwordlongwordlongwordlongwordlongwordlongword");

// Pairs of Shift-JIS, and as much other text between them.
Pieces japanese_pieces() {
    Pieces pieces;
    for (int first = 0x81; first <= 0xEF; ++first) {
        for (int second = 0x40; is_lead(static_cast<uint8_t>(first)) && second <= 0xFC; ++second) {
            pieces.emplace_back(second % 2 == 0 ? "a" : "\n");
            if (second != 0x7F) pieces.push_back({static_cast<char>(first), static_cast<char>(second)});
        }
    }
    return pieces;
}

// ---- Header texts

std::string taken(char* text) {
    const std::string result = text;
    std::free(text);
    return result;
}

std::string replaced(const std::string& text, std::string_view from, std::string_view to) {
    std::string result;
    std::size_t at = 0;
    for (std::size_t place; (place = text.find(from, at)) != text.npos; at = place + from.size()) {
        result.append(text, at, place - at).append(to);
    }
    return result.append(text, at);
}

// The lines of words made one again. A line end stands within a text that was cut, or before a word, or in the
// place of the blank behind one.
std::string unfolded(const std::string& words, const std::string& prefix) {
    const std::string uncut = replaced(words, "?=\r\n " + prefix, "");
    return replaced(replaced(uncut, "?=\r\n ", "?= "), "\r\n ", "");
}

std::string through_q(const std::string& text, std::size_t) {
    const std::string words = unfolded(taken(rfc1522encode(text.c_str())), "=?US-ASCII?Q?");
    return words.empty() ? "" : taken(rfc1522decoding(words.c_str()));
}

// The size is that of the charset's name: up to one that leaves no room on a line.
std::string through_b(const std::string& text, std::size_t size) {
    const std::string charset(size, 'u');
    const std::string words = unfolded(taken(rfc1522encode_wmc(text.c_str(), charset.c_str())), "=?" + charset + "?B?");
    return words.empty() ? "" : taken(rfc1522decoding_wmc(words.c_str()));
}

// Blanks at the end go with the last word.
std::string without_last_blanks(std::string text) {
    if (IsStringAllAscii(text.c_str()) == 1) return text;
    while (text.size() > 1 && text.ends_with(' ')) text.pop_back();
    return text;
}

const Pieces kWordPieces = pieces_of(
    " | |  |\t|=|=20|_|a|(|words|\x80|\xFF|\xE4|\xF6|\xFC\xFC|\xC3\xA4 |\xE4 \xF6|a\xFC| \xE4|"
    "longwordlongwordlongwordlongwordlongwordlongwordlongword |"
    "\xDF\xDF\xDF\xDF\xDF\xDF\xDF\xDF\xDF\xDF\xDF\xDF\xDF\xDF\xDF\xDF\xDF ");

const Codec kCodecs[] = {
    {"base64", any_bytes_and({}), through<Base64Encoder, Base64Decoder>},
    {"quoted_printable_binary", any_bytes_and(kLinePieces), through<QpEncoder<kQpBinary>, QpDecoder>},
    {"quoted_printable_text", any_bytes_and(kLinePieces), through<QpEncoder<kQpTextFile>, QpDecoder>, without_last_cr},
    {"uuencode", any_bytes_and({}), through_uuencode},
    {"binhex", any_bytes_and(kRunPieces), through_binhex},
    {"binhex_runs", kRunPieces, through_binhex},
    {"japanese", japanese_pieces(), through<MarkingEncoder, RepairingDecoder>},
    {"words_q", kWordPieces, through_q, without_last_blanks},
    {"words_b", kWordPieces, through_b, without_last_blanks},
};

void PrintTo(const Codec& codec, std::ostream* out) { *out << codec.name; }

constexpr std::size_t kLongest = 10'000;

// Beyond a few hundred bytes a build for debugging takes samples.
#ifdef __OPTIMIZE__
constexpr std::size_t kSampledBeyond = kLongest;
#else
constexpr std::size_t kSampledBeyond = 300;
#endif

class RoundTrip : public CodecTest, public testing::WithParamInterface<Codec> {};

TEST_P(RoundTrip, every_length_comes_back) {
    const Codec& codec = GetParam();
    for (std::size_t length = 0; length <= kLongest; length += length < kSampledBeyond ? 1 : 97) {
        const std::string text = random_text(codec.pieces, length);
        ASSERT_EQ(codec.back(text, 1 + random_below(80)), codec.kept(text)) << length;
    }
}

INSTANTIATE_TEST_SUITE_P(Codecs, RoundTrip, testing::ValuesIn(kCodecs),
                         [](const auto& codec) { return std::string(codec.param.name); });

}  // namespace
}  // namespace vel::test
