// Kept: a line end is written by the character behind it, so a final one is dropped (more).
// Kept: CR is dropped wherever it stands; LF alone is a line end and is written as CR LF (text).
// Kept: "=" CR takes the character behind it, whatever it is (escape).
// Kept: an escape that is none yields 0xFF (byte_of_hex); "=" LF is one of them.
// Kept: blanks before a line end stay.
#include "codec/qp_decoder.h"

#include "codec/words.h"

namespace vel {
namespace {

// Copies up to the first "=", CR or LF. May write up to seven bytes more than it copies.
const uint8_t* copy_plain(const uint8_t* at, const uint8_t* end, Cursor& out) {
    for (; end - at >= kWord; at += kWord, out += kWord) {
        const uint64_t word = load_word(at);
        std::memcpy(out, &word, sizeof word);
        const uint64_t marks = ~(differs(word, '=') & differs(word, '\r') & differs(word, '\n')) & kHighBits;
        if (marks == 0) continue;
        const int length = bytes_before_mark(marks);
        out += length;
        return at + length;
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

// Takes text up to the next line end or unfinished escape.
const uint8_t* QpDecoder::text(const uint8_t* at, const uint8_t* end, Cursor& out) {
    Cursor to = out;
    do {
        for (; end - at >= 3 && *at == '='; at += 3) {
            if (at[1] != '\r') put_byte(to, byte_of_hex(at[1], at[2]));
        }
        at = copy_plain(at, end, to);
    } while (end - at >= 3 && *at == '=');
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
