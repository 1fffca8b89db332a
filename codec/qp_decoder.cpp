// Kept: a line end is written by the character behind it, so a final one is dropped (more).
// Kept: CR is dropped wherever it stands; LF alone is a line end and is written as CR LF (text).
// Kept: "=" CR takes the character behind it, whatever it is (escape).
// Kept: an escape that is none yields 0xFF (byte_of_hex); "=" LF is one of them.
// Kept: blanks before a line end stay.
#include "codec/qp_decoder.h"

#include "codec/words.h"

namespace vel {
namespace {

// Copies up to the first "=", CR or LF. May write up to 15 bytes more than it copies. Stands inside its
// caller, where the cursor is a register.
[[gnu::always_inline]] inline const uint8_t* copy_plain(const uint8_t* at, const uint8_t* end, Cursor& out) {
    while (end - at >= kWide) {
        const Wide wide = load_wide(at);
        std::memcpy(out, &wide, sizeof wide);
        const int length = bytes_before_wide_mark((wide == '=') | (wide == '\r') | (wide == '\n'));
        out += length;
        at += length;
        if (length < kWide) return at;
    }
    while (at < end && *at != '=' && *at != '\r' && *at != '\n') *out++ = *at++;
    return at;
}

}  // namespace

std::size_t QpDecoder::more(Bytes in, Cursor& out) {
    const uint8_t* at = in.data();
    const uint8_t* const end = at + in.size();
    while (at < end) {
        if (phase_ != Phase::text) {
            escape(*at++, out);
            continue;
        }
        if (line_end_) put_text(out, "\r\n");
        line_end_ = false;
        at = text(at, end, out);
    }
    return in.size();
}

// Takes text up to the next line end or unfinished escape. A soft break is decoded like an escape, and the
// byte that it gives not kept: that costs less than a branch.
const uint8_t* QpDecoder::text(const uint8_t* at, const uint8_t* end, Cursor& out) {
    Cursor to = out;
    for (at = copy_plain(at, end, to); end - at >= 3 && *at == '='; at = copy_plain(at + 3, end, to)) {
        *to = byte_of_hex(at[1], at[2]);
        to += at[1] != '\r';
    }
    out = to;
    return at < end ? special(at, end) : at;
}

// Takes a line end, or the beginning of an escape whose rest is still to come.
const uint8_t* QpDecoder::special(const uint8_t* at, const uint8_t* end) {
    if (*at == '=') phase_ = Phase::equals;
    if (*at == '\r' && end - at > 1 && at[1] == '\n') ++at;
    if (*at == '\n') line_end_ = true;
    return at + 1;
}

void QpDecoder::escape(uint8_t character, Cursor& out) {
    if (phase_ == Phase::equals) {
        phase_ = character == '\r' ? Phase::soft_break : Phase::second_digit;
        first_digit_ = character;
        return;
    }
    if (phase_ == Phase::second_digit) put_byte(out, byte_of_hex(first_digit_, character));
    phase_ = Phase::text;
}

}  // namespace vel
