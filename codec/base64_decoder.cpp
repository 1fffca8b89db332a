// Kept: "-" and NUL end the text as "=" does; "-" is where a delimiter line begins (one).
// Kept: each character behind a quantum's first gives its byte at once, so a quantum that is cut
//       short yields what it can (one).
#include "codec/base64_decoder.h"

#include "codec/quantum.h"
#include "frame/ascii.h"

namespace vel {
namespace {

constexpr Shares kShares = shares_of(kBase64Value);

bool ends_text(uint8_t character) { return character == '=' || character == '-' || character == '\0'; }

}  // namespace

// Takes quanta that are not broken by anything, and the line ends between them.
const uint8_t* Base64Decoder::whole_quanta(const uint8_t* at, const uint8_t* end, Cursor& out) {
    Cursor to = out;
    while (end - at >= 4) {
        const uint32_t bytes = quantum_of(kShares, at);
        if (bytes & kMarked) {
            if (at[0] != '\r' || at[1] != '\n') break;
            at += 2;
            continue;
        }
        std::memcpy(to, &bytes, sizeof bytes);
        to += 3;
        at += 4;
    }
    out = to;
    return at;
}

void Base64Decoder::one(uint8_t character, Cursor& out) {
    const uint8_t value = kBase64Value[character];
    if (value == kNoDigit) {
        if (ends_text(character)) {
            state_ = State::ended;
        } else if (!ascii::is_space(static_cast<char>(character))) {
            state_ = State::refused;
        }
        return;
    }
    bits_ = bits_ << 6 | value;
    if (place_ > 0) put_byte(out, bits_ >> (6 - 2 * place_));
    place_ = static_cast<uint8_t>((place_ + 1) % 4);
}

std::size_t Base64Decoder::more(Bytes in, Cursor& out) {
    const uint8_t* at = in.data();
    const uint8_t* const end = at + in.size();
    while (at < end && !over()) {
        if (place_ == 0) at = whole_quanta(at, end, out);
        if (at < end) one(*at++, out);
    }
    return static_cast<std::size_t>(at - in.data());
}

}  // namespace vel
