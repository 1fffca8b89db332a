// Kept: at the very first byte a lead byte makes a character with any byte behind it (held_and).
// Kept: the last byte is written as it stands when it is no character, with a mark too (finish).
// Kept: double-byte text is closed with JIS X 0201, where RFC 1468 wants a text to end in ASCII (close).
#include "codec/japanese_encoder.h"

#include <utility>

#include "codec/japanese_half_width.h"

namespace vel {
namespace {

constexpr uint8_t kFirstHigh = 0x80;

}  // namespace

void JisEncoder::open(Cursor& out) {
    if (!std::exchange(open_, true)) put_text(out, kOpenDouble);
}

void JisEncoder::close(Cursor& out) {
    if (std::exchange(open_, false)) put_text(out, kCloseDouble);
}

void JisEncoder::put_double(DoubleByte sjis, Cursor& out) {
    open(out);
    put_pair(jis_of(sjis), out);
}

const uint8_t* JisEncoder::ascii(const uint8_t* at, const uint8_t* end, Cursor& out) {
    const uint8_t* const stop = first_of(at, end, [](auto bytes) { return bytes >= kFirstHigh; });
    if (stop == at) return at;
    started_ = true;
    close(out);
    put_text(out, {reinterpret_cast<const char*>(at), static_cast<std::size_t>(stop - at)});
    return stop;
}

const uint8_t* JisEncoder::whole_pairs(const uint8_t* at, const uint8_t* end, Cursor& out) {
    const auto is_pair = [=](const uint8_t* two) { return end - two >= 2 && is_lead(two[0]) && is_trail(two[1]); };
    if (!is_pair(at)) return at;
    started_ = true;
    open(out);
    Cursor to = out;
    for (; is_pair(at); at += 2) put_pair(jis_of({at[0], at[1]}), to);
    out = to;
    return at;
}

// Converts the held byte now that the next one is known. Tells whether that one is used up too.
bool JisEncoder::held_and(uint8_t next, Cursor& out) {
    const uint8_t byte = std::exchange(held_, uint8_t{0});
    const bool is_first = !std::exchange(started_, true);
    if (is_half_width(byte)) {
        const FullWidth full = full_width(byte, next);
        put_double(full.sjis, out);
        return full.takes_next;
    }
    if (is_lead(byte) && (is_first || is_trail(next))) {
        put_double({byte, next}, out);
        return true;
    }
    close(out);
    if (mark_.empty()) {
        put_byte(out, byte);
    } else {
        put_text(out, mark_);
    }
    return false;
}

void JisEncoder::more(Bytes in, Cursor& out) {
    const uint8_t* at = in.data();
    const uint8_t* const end = at + in.size();
    if (held_ && at < end && held_and(*at, out)) ++at;
    while (at < end) {
        at = whole_pairs(ascii(at, end, out), end, out);
        if (at == end || *at < kFirstHigh) continue;
        held_ = *at++;
        if (at < end && held_and(*at, out)) ++at;
    }
}

void JisEncoder::finish(Cursor& out) {
    const bool is_character = is_half_width(held_);
    if (is_character) held_and(0, out);
    close(out);
    if (held_) put_byte(out, held_);
}

}  // namespace vel
