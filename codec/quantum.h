// Four characters to three bytes by table, for base64 and uuencode.
#ifndef VEL_CODEC_QUANTUM_H
#define VEL_CODEC_QUANTUM_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "codec/alphabets.h"

namespace vel {

// Three bytes as they are stored, and a mark for what is no quantum.
using Quantum = std::array<uint8_t, 4>;

constexpr auto kMarked = std::bit_cast<uint32_t>(Quantum{0, 0, 0, 0xFF});

// What each character adds to its quantum, by its place there.
using Shares = std::array<std::array<uint32_t, 256>, 4>;

// Characters without a value, kNoDigit, are marked.
constexpr Shares shares_of(const std::array<uint8_t, 256>& values) {
    Shares shares{};
    for (unsigned place = 0; place < shares.size(); ++place) {
        for (std::size_t character = 0; character < values.size(); ++character) {
            const uint32_t bits = uint32_t{values[character]} << (18 - 6 * place);
            const Quantum bytes{static_cast<uint8_t>(bits >> 16), static_cast<uint8_t>(bits >> 8),
                                static_cast<uint8_t>(bits), 0};
            shares[place][character] = values[character] == kNoDigit ? kMarked : std::bit_cast<uint32_t>(bytes);
        }
    }
    return shares;
}

// The bytes of four characters, as they are stored; kMarked is set when one of them has no value.
inline uint32_t quantum_of(const Shares& shares, const uint8_t* four) {
    return shares[0][four[0]] | shares[1][four[1]] | shares[2][four[2]] | shares[3][four[3]];
}

}  // namespace vel

#endif
