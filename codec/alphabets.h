// The alphabets of base64 and of hexadecimal escapes, and what is derived from them.
#ifndef VEL_CODEC_ALPHABETS_H
#define VEL_CODEC_ALPHABETS_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

inline constexpr char basis_64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";  // RFC 2045
inline constexpr char basis_hex[] = "0123456789ABCDEF";

namespace vel {

constexpr uint8_t kNoDigit = 0xFF;

// The place of each byte in an alphabet, kNoDigit for all others.
template <std::size_t Bytes>
constexpr std::array<uint8_t, Bytes> places_in(std::string_view alphabet) {
    std::array<uint8_t, Bytes> places{};
    places.fill(kNoDigit);
    for (std::size_t place = 0; place < alphabet.size(); ++place) {
        places[static_cast<uint8_t>(alphabet[place])] = static_cast<uint8_t>(place);
    }
    return places;
}

// Hex digits are read in either case.
template <std::size_t Bytes>
constexpr std::array<uint8_t, Bytes> hex_values() {
    auto values = places_in<Bytes>(basis_hex);
    for (std::size_t digit = 'A'; digit <= 'F'; ++digit) values[digit - 'A' + 'a'] = values[digit];
    return values;
}

}  // namespace vel

// By ASCII code; never indexed by a byte above 127.
inline constexpr auto index_64 = vel::places_in<128>(basis_64);
inline constexpr auto index_hex = vel::hex_values<128>();

namespace vel {

// The same by any byte.
inline constexpr auto kBase64Value = places_in<256>(basis_64);
inline constexpr auto kHexValue = hex_values<256>();

// The byte of two hex digits; 0xFF when either is none: the eight bits of kNoDigit, in either place, fill
// the byte, without a branch.
constexpr uint8_t byte_of_hex(uint8_t first, uint8_t second) {
    const unsigned high = kHexValue[first];
    const unsigned low = kHexValue[second];
    return static_cast<uint8_t>(high << 4 | low | (high | low) >> 4);
}
static_assert(byte_of_hex('4', 'f') == 0x4F && byte_of_hex('0', '0') == 0);
static_assert(byte_of_hex('4', 'g') == 0xFF && byte_of_hex('\r', '0') == 0xFF);

// The two characters of every 12 bits, in the order in which they are stored.
using PairTable = std::array<uint16_t, 4096>;

constexpr PairTable pairs_of(std::string_view alphabet) {
    PairTable pairs{};
    for (std::size_t bits = 0; bits < pairs.size(); ++bits) {
        pairs[bits] = std::bit_cast<uint16_t>(std::array<char, 2>{alphabet[bits >> 6], alphabet[bits & 63]});
    }
    return pairs;
}

}  // namespace vel

#endif
