// Bytes and pairs of Japanese text: Shift-JIS, and JIS as mail carries it (ISO-2022-JP, RFC 1468).
//
// Kept: pairs are computed, whatever they hold: no character is looked up (jis_of, sjis_of).
#ifndef VEL_CODEC_JAPANESE_BYTES_H
#define VEL_CODEC_JAPANESE_BYTES_H

#include "codec/bytes.h"
#include "codec/words.h"

namespace vel {

constexpr uint8_t kEscape = 27;
constexpr std::string_view kOpenDouble = "\x1B$B";   // what follows is JIS X 0208
constexpr std::string_view kCloseDouble = "\x1B(J";  // what follows is JIS X 0201

// The last bytes of escape sequences, those of older and newer writers.
constexpr bool opens_double(uint8_t last) { return last == 'B' || last == '@'; }
constexpr bool closes_double(uint8_t last) { return last == 'B' || last == 'J'; }

// The classes of Shift-JIS bytes. A trail byte may be a lead byte too, or ASCII.
constexpr bool is_half_width(uint8_t byte) { return byte >= 0xA1 && byte <= 0xDF; }
constexpr bool is_trail(uint8_t byte) { return byte >= 0x40 && byte <= 0xFC; }
constexpr bool is_lead(uint8_t byte) { return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xEF); }

struct DoubleByte {
    uint8_t first;
    uint8_t second;
    bool operator==(const DoubleByte&) const = default;
};

inline void put_pair(DoubleByte pair, Cursor& out) {
    put_byte(out, pair.first);
    put_byte(out, pair.second);
}

// The first byte that stops(bytes) holds of; it is asked of single bytes and of sixteen at once.
template <class Stops>
const uint8_t* first_of(const uint8_t* at, const uint8_t* end, Stops stops) {
    for (; end - at >= kWide; at += kWide) {
        const int before = bytes_before_wide_mark(stops(load_wide(at)));
        if (before < kWide) return at + before;
    }
    while (at < end && !stops(*at)) ++at;
    return at;
}

// Shift-JIS puts two rows of JIS behind one lead byte. From 0x9F on, trail bytes belong to the second.
constexpr DoubleByte jis_of(DoubleByte sjis) {
    const unsigned base = sjis.first > 0x9F ? 0xB0 : 0x70;
    const bool odd_row = sjis.second < 0x9F;
    const unsigned shift = sjis.second < 0x80 ? 0x1F : odd_row ? 0x20 : 0x7E;
    return {static_cast<uint8_t>((sjis.first - base) * 2 - (odd_row ? 1 : 0)),
            static_cast<uint8_t>(sjis.second - shift)};
}

constexpr DoubleByte sjis_of(DoubleByte jis) {
    const unsigned base = jis.first < 0x5F ? 0x70 : 0xB0;
    const bool odd_row = jis.first % 2 != 0;
    const unsigned shift = !odd_row ? 0x7E : jis.second < 0x60 ? 0x1F : 0x20;
    return {static_cast<uint8_t>(base + (jis.first + 1U) / 2), static_cast<uint8_t>(jis.second + shift)};
}
static_assert(jis_of({0x88, 0x9F}) == DoubleByte{0x30, 0x21} && sjis_of({0x30, 0x21}) == DoubleByte{0x88, 0x9F});

}  // namespace vel

#endif
