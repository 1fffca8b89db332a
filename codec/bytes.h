// What goes into a codec and where its output goes.
//
// A codec is an object with more(bytes, out), any number of times, and finish(). It writes at the
// cursor `out` and moves it on. Whoever calls has made room: room(n) bytes hold all that more() of n
// bytes and finish() can write, whatever came before.
#ifndef VEL_CODEC_BYTES_H
#define VEL_CODEC_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "codec/alphabets.h"

namespace vel {

using Bytes = std::span<const uint8_t>;
using Cursor = uint8_t*;

inline Bytes bytes_of(std::string_view text) { return {reinterpret_cast<const uint8_t*>(text.data()), text.size()}; }

inline void put_byte(Cursor& out, unsigned byte) { *out++ = static_cast<uint8_t>(byte); }

inline void put_text(Cursor& out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    out += text.size();
}

// Writes three bytes as four characters.
inline void put_pairs(Cursor& out, const PairTable& pairs, unsigned a, unsigned b, unsigned c) {
    const uint16_t characters[] = {pairs[a << 4 | b >> 4], pairs[(b & 15) << 8 | c]};
    std::memcpy(out, characters, sizeof characters);
    out += sizeof characters;
}

}  // namespace vel

#endif
