// Numbers as BinHex and AppleSingle store them: the most significant byte first.
#ifndef VEL_CODEC_BIG_ENDIAN_H
#define VEL_CODEC_BIG_ENDIAN_H

#include <bit>

#include "codec/bytes.h"

// The number whose bytes in memory are those of a host's number in the stored order; its own inverse.
constexpr uint32_t to_MAC_LONG(uint32_t value) {
    return std::endian::native == std::endian::little ? __builtin_bswap32(value) : value;
}
constexpr uint16_t to_MAC_WORD(uint16_t value) {
    return std::endian::native == std::endian::little ? __builtin_bswap16(value) : value;
}

namespace vel {

inline uint32_t long_at(const uint8_t* stored) {
    uint32_t value = 0;
    std::memcpy(&value, stored, sizeof value);
    return to_MAC_LONG(value);
}

inline uint16_t word_at(const uint8_t* stored) {
    uint16_t value = 0;
    std::memcpy(&value, stored, sizeof value);
    return to_MAC_WORD(value);
}

inline void put_long(Cursor& out, uint32_t value) {
    const uint32_t stored = to_MAC_LONG(value);
    std::memcpy(out, &stored, sizeof stored);
    out += sizeof stored;
}

inline void put_word(Cursor& out, uint16_t value) {
    const uint16_t stored = to_MAC_WORD(value);
    std::memcpy(out, &stored, sizeof stored);
    out += sizeof stored;
}

}  // namespace vel

#endif
