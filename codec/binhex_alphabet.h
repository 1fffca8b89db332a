// The characters of BinHex 4.0 (RFC 1741), and what stands around them.
#ifndef VEL_CODEC_BINHEX_ALPHABET_H
#define VEL_CODEC_BINHEX_ALPHABET_H

#include <cstdint>
#include <string_view>

namespace vel {

inline constexpr std::string_view kBinhexAlphabet = "!\"#$%&'()*+,-012345689@ABCDEFGHIJKLMNPQRSTUVXYZ[`abcdefhijklmpqr";
static_assert(kBinhexAlphabet.size() == 64);

inline constexpr std::string_view kBinhexBannerStart =
    "(This file must be converted with BinHex ";  // the version is behind it
inline constexpr uint8_t kBinhexColon = ':';      // opens and closes the characters
inline constexpr uint8_t kBinhexMarker = 0x90;    // of a run: the byte, the marker, how often; 0 is the marker itself
inline constexpr unsigned kBinhexMostRun = 255;

}  // namespace vel

#endif
