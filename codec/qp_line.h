// The bytes of one quoted-printable line: what each calls for and how it is written.
#ifndef VEL_CODEC_QP_LINE_H
#define VEL_CODEC_QP_LINE_H

#include "codec/qp_encoder.h"
#include "codec/words.h"

namespace vel {

// What a byte calls for; those before `escape` are plain once a line has begun.
enum class Kind : uint8_t { plain, dot, letter_f, escape, carriage_return, line_feed };

template <QpPolicy kPolicy>
inline constexpr auto kKinds = [] {
    std::array<Kind, 256> kinds{};
    for (std::size_t byte = 0; byte < kinds.size(); ++byte) {
        if (byte < kPolicy.first_plain || byte > 126) kinds[byte] = Kind::escape;
    }
    kinds['='] = Kind::escape;
    kinds['.'] = Kind::dot;
    if (kPolicy.guards_from) kinds['F'] = Kind::letter_f;
    if (kPolicy.keeps_lines) {
        kinds['\t'] = Kind::plain;
        kinds['\r'] = Kind::carriage_return;
        kinds['\n'] = Kind::line_feed;
    }
    return kinds;
}();

// How a byte is written inside a line: a word to copy and how much of it counts. Nothing counts of the
// bytes that are no matter of one line.
struct Writing {
    std::array<char, 3> text;
    uint8_t length;
};

template <QpPolicy kPolicy>
inline constexpr auto kWritings = [] {
    std::array<Writing, 256> writings{};
    for (std::size_t byte = 0; byte < writings.size(); ++byte) {
        const Kind kind = kKinds<kPolicy>[byte];
        const char digits[] = {basis_hex[byte >> 4], basis_hex[byte & 15]};
        if (kind < Kind::escape) writings[byte] = {{static_cast<char>(byte)}, 1};
        if (kind == Kind::escape) writings[byte] = {{'=', digits[0], digits[1]}, 3};
    }
    return writings;
}();

// Tells whether none of eight bytes needs a look: a fast path, so a tab among them is looked at too.
template <QpPolicy kPolicy>
bool is_plain(uint64_t word) {
    const uint64_t high_enough = word + kEveryByte * (0x80 - kPolicy.first_plain);
    const uint64_t too_high = word + kEveryByte;
    return (~word & high_enough & ~too_high & differs(word, '=') & kHighBits) == kHighBits;
}

// Writes bytes up to the line's end or one that is no matter of one line.
inline const uint8_t* write_each(const std::array<Writing, 256>& writings, const uint8_t* at, const uint8_t* end,
                                 Cursor& out, const Cursor full) {
    for (; at < end && out < full; ++at) {
        const Writing& writing = writings[*at];
        if (writing.length == 0) break;
        std::memcpy(out, &writing, sizeof writing);
        out += writing.length;
    }
    return at;
}

}  // namespace vel

#endif
