// Copying the text between two specials of quoted-printable, a word at a time.
#ifndef VEL_CODEC_PLAIN_RUN_H
#define VEL_CODEC_PLAIN_RUN_H

#include <bit>

#include "codec/bytes.h"

namespace vel {

constexpr uint64_t kEveryByte = 0x0101010101010101;

// High bits of the bytes of a word that differ from a byte; the other bits mean nothing. No carry
// leaves a byte, so each is judged by itself.
constexpr uint64_t differs(uint64_t word, uint8_t byte) {
    constexpr uint64_t kLow = kEveryByte * 0x7F;
    const uint64_t difference = word ^ kEveryByte * byte;
    return ((difference & kLow) + kLow) | difference;
}

// The number of bytes, as they stand in memory, before the first one with its high bit set.
constexpr int bytes_before_mark(uint64_t marks) {
    return (std::endian::native == std::endian::little ? std::countr_zero(marks) : std::countl_zero(marks)) / 8;
}

// Copies up to the first "=", CR or LF. May write up to seven bytes more than it copies.
inline const uint8_t* copy_plain(const uint8_t* at, const uint8_t* end, Cursor& out) {
    for (; end - at >= 8; at += 8, out += 8) {
        uint64_t word = 0;
        std::memcpy(&word, at, sizeof word);
        std::memcpy(out, &word, sizeof word);
        const uint64_t marks = ~(differs(word, '=') & differs(word, '\r') & differs(word, '\n')) & kEveryByte * 0x80;
        if (marks == 0) continue;
        const int length = bytes_before_mark(marks);
        out += length;
        return at + length;
    }
    while (at < end && *at != '=' && *at != '\r' && *at != '\n') *out++ = *at++;
    return at;
}

}  // namespace vel

#endif
