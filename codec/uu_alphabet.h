// The characters of uuencode: a six-bit value v is character v + 32, but 0 is a grave accent.
#ifndef VEL_CODEC_UU_ALPHABET_H
#define VEL_CODEC_UU_ALPHABET_H

#include <cstdint>
#include <string_view>

namespace vel {

inline constexpr std::string_view kUuAlphabet = "`!\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_";

// Blank and grave accent both read as 0.
constexpr unsigned uu_value(char character) { return (static_cast<uint8_t>(character) - 32U) & 63; }

static_assert([] {
    for (unsigned value = 0; value < 64; ++value) {
        if (uu_value(kUuAlphabet[value]) != value) return false;
    }
    return kUuAlphabet.size() == 64 && uu_value(' ') == 0;
}());

}  // namespace vel

#endif
