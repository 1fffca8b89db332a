// Kept: double-byte text goes on behind a line end, until an escape sequence ends it (end_line).
// Kept: ESC "$" and ESC "(" are dropped with whatever byte is third (step).
// Kept: any other byte behind ESC ends double-byte text; the byte behind that one is written as it
//       stands, an ESC too (escape, step).
// Kept: CR alone ends a line as CR LF does, and every CR is written CR LF (end_line).
// Kept: a line in which a repair fails ends in CR LF, whatever ended it before (end_line, finish).
#include "codec/japanese_decoder.h"

#include <utility>

namespace vel {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kOpenerSize = 2;  // "$B" without its ESC
constexpr std::size_t kCloserSize = 2;  // "(J" without its ESC

// Converts pairs, up to one that does not satisfy. Returns where it stopped.
template <class Satisfies>
const uint8_t* put_pairs(const uint8_t* at, const uint8_t* end, Cursor& out, Satisfies satisfies) {
    Cursor to = out;
    for (; end - at >= 2 && satisfies(at[0], at[1]); at += 2) put_pair(sjis_of({at[0], at[1]}), to);
    out = to;
    return at;
}

// Pairs without control characters, among which are line ends and ESC.
const uint8_t* put_clean_pairs(const uint8_t* at, const uint8_t* end, Cursor& out) {
    return put_pairs(at, end, out, [](uint8_t first, uint8_t second) { return first > kEscape && second > kEscape; });
}

constexpr bool ends_line(uint8_t byte) { return byte == '\r' || byte == '\n'; }

}  // namespace

// Copies what is no control character and begins no repair.
const uint8_t* JisDecoder::plain(const uint8_t* at, const uint8_t* end, Cursor& out) const {
    const uint8_t damaged = repairs_ ? '$' : kEscape;
    const auto* stop = first_of(at, end, [=](auto bytes) { return (bytes <= kEscape) | (bytes == damaged); });
    put_text(out, {reinterpret_cast<const char*>(at), static_cast<std::size_t>(stop - at)});
    return stop;
}

void JisDecoder::put_half(Cursor& out) {
    if (half_ != -1) put_byte(out, static_cast<unsigned>(std::exchange(half_, -1)));
}

void JisDecoder::text(uint8_t byte, Cursor& out) {
    if (byte == kEscape) {
        put_half(out);
        phase_ = Phase::escape;
    } else if (double_ && half_ == -1) {
        half_ = byte;
    } else if (double_) {
        put_pair(sjis_of({static_cast<uint8_t>(std::exchange(half_, -1)), byte}), out);
    } else if (byte == '$' && repairs_) {
        phase_ = Phase::dollar;
    } else {
        put_byte(out, byte);
    }
}

void JisDecoder::escape(uint8_t byte) {
    if (byte == '$') {
        phase_ = Phase::escape_dollar;
    } else if (byte == '(') {
        phase_ = Phase::escape_paren;
    } else {
        go_to(Phase::behind_escape, false);
    }
}

void JisDecoder::dollar(uint8_t byte, Cursor& out) {
    if (opens_double(byte)) {
        held_ = {'$', static_cast<char>(byte)};
        phase_ = Phase::damaged;
    } else {
        put_byte(out, '$');
        phase_ = Phase::text;
        text(byte, out);
    }
}

// The closer stands at a pair's border, behind at least one pair.
void JisDecoder::damaged(uint8_t byte, Cursor& out) {
    if (byte == kEscape) {
        phase_ = Phase::damaged_escape;
        return;
    }
    const bool may_close = held_.size() % 2 != 0 && held_.size() > kOpenerSize + kCloserSize;
    held_ += static_cast<char>(byte);
    if (may_close && closes_double(byte) && held_[held_.size() - kCloserSize] == '(') {
        repair(kCloserSize, out);
    } else if (held_.size() == kMostHeld) {
        give_up(Phase::unconverted, out);
    }
}

// No pair holds an ESC, so one ends the search wherever it stands.
void JisDecoder::damaged_escape(uint8_t byte, Cursor& out) {
    if (byte == '(') {
        phase_ = Phase::damaged_paren;
    } else {
        give_up(Phase::escape, out);
        escape(byte);
    }
}

void JisDecoder::damaged_paren(uint8_t byte, Cursor& out) {
    if (closes_double(byte)) {
        repair(0, out);
    } else {
        give_up(Phase::text, out);
    }
}

// Converts what was held back, but for the closer behind it.
void JisDecoder::repair(std::size_t behind, Cursor& out) {
    const Bytes pairs = bytes_of(held_).subspan(kOpenerSize, held_.size() - kOpenerSize - behind);
    const uint8_t* const end = pairs.data() + pairs.size();
    const uint8_t* const half = put_pairs(pairs.data(), end, out, [](auto...) { return true; });
    if (half < end) put_byte(out, *half);
    phase_ = Phase::text;
}

void JisDecoder::give_up(Phase then, Cursor& out) {
    put_text(out, held_);
    phase_ = then;
}

// Writes what was held back, at a line's end. Tells whether a repair has failed.
bool JisDecoder::release(Cursor& out) {
    const Phase phase = std::exchange(phase_, Phase::text);
    const bool in_repair = phase == Phase::damaged || phase == Phase::damaged_escape || phase == Phase::damaged_paren;
    put_half(out);
    if (phase == Phase::dollar) put_byte(out, '$');
    if (in_repair) put_text(out, held_);
    return in_repair || phase == Phase::unconverted;
}

void JisDecoder::end_line(uint8_t byte, Cursor& out) {
    const bool failed = release(out);
    const bool is_return = byte == '\r';
    put_text(out, failed || is_return ? kLineEnd : kLineEnd.substr(1));
    if (is_return) phase_ = Phase::carriage_return;
}

void JisDecoder::step(uint8_t byte, Cursor& out) {
    if (phase_ == Phase::carriage_return) {
        phase_ = Phase::text;
        if (byte == '\n') return;
    }
    if (ends_line(byte)) return end_line(byte, out);
    switch (phase_) {
        case Phase::carriage_return:
        case Phase::text: return text(byte, out);
        case Phase::escape: return escape(byte);
        case Phase::escape_dollar: return go_to(Phase::text, double_ || opens_double(byte));
        case Phase::escape_paren: return go_to(Phase::text, double_ && !closes_double(byte));
        case Phase::dollar: return dollar(byte, out);
        case Phase::damaged: return damaged(byte, out);
        case Phase::damaged_escape: return damaged_escape(byte, out);
        case Phase::damaged_paren: return damaged_paren(byte, out);
        case Phase::behind_escape: phase_ = Phase::text; [[fallthrough]];
        case Phase::unconverted: return put_byte(out, byte);
    }
}

void JisDecoder::more(Bytes in, Cursor& out) {
    const uint8_t* at = in.data();
    const uint8_t* const end = at + in.size();
    while (at < end) {
        if (phase_ == Phase::text && half_ == -1) at = double_ ? put_clean_pairs(at, end, out) : plain(at, end, out);
        if (at < end) step(*at++, out);
    }
}

void JisDecoder::finish(Cursor& out) {
    if (release(out)) put_text(out, kLineEnd);
}

}  // namespace vel
