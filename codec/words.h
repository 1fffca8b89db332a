// Looking at eight bytes at once, or at sixteen.
#ifndef VEL_CODEC_WORDS_H
#define VEL_CODEC_WORDS_H

#include <bit>
#include <cstdint>
#include <cstring>

namespace vel {

constexpr std::ptrdiff_t kWord = sizeof(uint64_t);
constexpr uint64_t kEveryByte = 0x0101010101010101;
constexpr uint64_t kHighBits = kEveryByte * 0x80;

inline uint64_t load_word(const uint8_t* from) {
    uint64_t word = 0;
    std::memcpy(&word, from, sizeof word);
    return word;
}

// High bits of the bytes that differ from a byte; the other bits mean nothing. No carry leaves a byte,
// so each is judged by itself.
constexpr uint64_t differs(uint64_t word, uint8_t byte) {
    const uint64_t difference = word ^ kEveryByte * byte;
    return ((difference & ~kHighBits) + ~kHighBits) | difference;
}

// The number of bytes, as they stand in memory, before the first one whose high bit is set.
constexpr int bytes_before_mark(uint64_t marks) {
    return (std::endian::native == std::endian::little ? std::countr_zero(marks) : std::countl_zero(marks)) / 8;
}

// Sixteen bytes, which compare in one step where the machine can.
using Wide [[gnu::vector_size(16)]] = uint8_t;
constexpr std::ptrdiff_t kWide = sizeof(Wide);

inline Wide load_wide(const uint8_t* from) {
    Wide wide;
    std::memcpy(&wide, from, sizeof wide);
    return wide;
}

// The number of bytes before the first marked one, 16 when there is none. A mark sets all bits of its byte.
template <class Marks>
int bytes_before_wide_mark(Marks marks) {
    uint64_t halves[2];
    static_assert(sizeof marks == sizeof halves);
    std::memcpy(halves, &marks, sizeof halves);
    if (halves[0] != 0) return bytes_before_mark(halves[0]);
    return halves[1] != 0 ? int{kWord} + bytes_before_mark(halves[1]) : int{kWide};
}

}  // namespace vel

#endif
