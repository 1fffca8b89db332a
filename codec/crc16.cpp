#include "codec/crc16.h"

#include <array>

namespace vel {
namespace {

constexpr unsigned kPolynomial = 0x1021;
constexpr std::size_t kStep = 8;  // bytes taken at once

// The remainder of each byte with a number of bytes behind it. The first two need no table: they fit.
using Remainders = std::array<std::array<uint16_t, 256>, kStep>;

constexpr uint16_t with_a_zero_bit_behind(unsigned crc) {
    return static_cast<uint16_t>(crc << 1 ^ (crc & 0x8000 ? kPolynomial : 0));
}

// Row k is for k + 2 bytes behind.
constexpr Remainders kRemainders = [] {
    Remainders rows{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        auto crc = static_cast<uint16_t>(byte << 8);
        for (auto& row : rows) {
            for (int bit = 0; bit < 8; ++bit) crc = with_a_zero_bit_behind(crc);
            row[byte] = crc;
        }
    }
    return rows;
}();
static_assert(kRemainders[0][1] == kPolynomial);

unsigned joined(unsigned high, unsigned low) { return high << 8 | low; }

unsigned remainder(unsigned byte, std::size_t bytes_behind) { return kRemainders[bytes_behind - 2][byte]; }

}  // namespace
}  // namespace vel

uint16_t DoCRC(uint16_t crc, const uint8_t* bytes, std::size_t count) {
    using vel::joined, vel::remainder;
    for (; count >= vel::kStep; count -= vel::kStep, bytes += vel::kStep) {
        const unsigned ahead = remainder(crc >> 8, 9) ^ remainder(crc & 0xFF, 8);
        const unsigned taken = remainder(bytes[0], 7) ^ remainder(bytes[1], 6) ^ remainder(bytes[2], 5) ^
                               remainder(bytes[3], 4) ^ remainder(bytes[4], 3) ^ remainder(bytes[5], 2);
        crc = static_cast<uint16_t>(ahead ^ taken ^ joined(bytes[6], bytes[7]));
    }
    for (; count > 0; --count, ++bytes) {
        crc = static_cast<uint16_t>(remainder(crc >> 8, 2) ^ joined(crc, *bytes));
    }
    return crc;
}
