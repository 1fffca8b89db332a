// Kept: a line of "END" and other text is data, and from then on no end line counts (take).
// Kept: nothing is checked: any character stands for the low six bits of its code less 32, so that a
//       line of LF alone has the count 42, and no characters (take).
#include "codec/uu_decoder.h"

#include <algorithm>
#include <array>

#include "codec/quantum.h"
#include "codec/uu_alphabet.h"
#include "codec/uu_begin.h"
#include "frame/ascii.h"

namespace vel {
namespace {

constexpr std::string_view kEnd = "END";
constexpr std::size_t kMostCharacters = UuDecoder::kMostBytes / 3 * 4;

std::string_view without_line_end(std::string_view line) {
    if (line.ends_with('\n')) line.remove_suffix(1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

bool begins_with_end(std::string_view line) { return ascii::starts_with_ignoring_case(line, kEnd); }

constexpr Shares kShares = shares_of([] {
    std::array<uint8_t, 256> values{};
    for (std::size_t character = 0; character < values.size(); ++character) {
        values[character] = static_cast<uint8_t>(uu_value(static_cast<char>(character)));
    }
    return values;
}());

// Decodes the groups of four that `count` bytes take. The last one may write three bytes too many.
void decode_groups(const char* in, std::size_t count, Cursor out) {
    const Bytes characters = bytes_of({in, (count + 2) / 3 * 4});
    for (std::size_t at = 0; at < characters.size(); at += 4, out += 3) {
        const uint32_t bytes = quantum_of(kShares, &characters[at]);
        std::memcpy(out, &bytes, sizeof bytes);
    }
}

// A line that was shortened on its way is filled up with blanks, which read as zero.
void decode(std::string_view characters, std::size_t count, Cursor& out) {
    if (characters.size() >= (count + 2) / 3 * 4) {
        decode_groups(characters.data(), count, out);
    } else {
        std::array<char, kMostCharacters> filled;
        std::fill(std::copy(characters.begin(), characters.end(), filled.begin()), filled.end(), ' ');
        decode_groups(filled.data(), count, out);
    }
    out += count;
}

}  // namespace

bool UuDecoder::closes(std::string_view line) const {
    if (!end_counts_ || !begins_with_end(line)) return false;
    return without_line_end(line).find_first_not_of(' ', kEnd.size()) == std::string_view::npos;
}

UuDecoder::Line UuDecoder::take(std::string_view line, Cursor& out) {
    if (begins_with_end(line)) {
        if (closes(line)) return Line::end;
        end_counts_ = false;
    }
    if (uu_begin_name(line)) return Line::begin;
    if (line.empty() || line[0] == '\r') return Line::over;
    const unsigned count = uu_value(line[0]);
    if (count == 0) return Line::over;
    decode(without_line_end(line.substr(1)), count, out);
    return Line::data;
}

}  // namespace vel
