// Kept: "From " on the very first line is not guarded (previous_ starts as 255).
// Kept: LF alone is written "=0A" without moving the column and is no line end (line_feed).
// Kept: CR is held back until its LF or another byte comes, and is dropped at the end. It is no
//       previous byte: what stood before it counts for trailing blanks and for "From ".
// Kept: a line is looked at only behind a whole step, so a late "=0D" can carry it past 76 characters.
// Kept: a line break that the text does not have is written at its end (finish).
#include "codec/qp_encoder.h"

#include <algorithm>

#include "codec/qp_line.h"

namespace vel {
namespace {

constexpr std::size_t kFullLine = 73;
constexpr std::string_view kFrom = "From";
constexpr std::ptrdiff_t kOneByOne = 32;  // bytes, before whole words of plain ones are tried again

}  // namespace

template <QpPolicy kPolicy>
std::size_t QpEncoder<kPolicy>::more(Bytes in, Cursor& out) {
    const uint8_t* at = in.data();
    const uint8_t* const end = at + in.size();
    while (at < end) {
        if (is_inside_line()) at = inside_line(at, end, out);
        if (at < end) step(*at++, out);
    }
    return in.size();
}

// Writes what can be written inside a line.
template <QpPolicy kPolicy>
const uint8_t* QpEncoder<kPolicy>::inside_line(const uint8_t* at, const uint8_t* end, Cursor& out) {
    const uint8_t* const start = at;
    const Cursor full = out + (kFullLine - column_);
    Cursor to = out;
    for (const uint8_t* before = nullptr; at != before;) {
        for (; std::min(end - at, full - to) >= kWord && is_plain<kPolicy>(load_word(at)); at += kWord, to += kWord) {
            std::memcpy(to, at, kWord);
        }
        before = at;
        at = write_each(kWritings<kPolicy>, at, at + std::min(end - at, kOneByOne), to, full);
    }
    if (at == start) return at;
    column_ += static_cast<std::size_t>(to - out);
    previous_ = at[-1];
    out = to;
    break_full_line(out);
    return at;
}

template <QpPolicy kPolicy>
void QpEncoder<kPolicy>::step(uint8_t byte, Cursor& out) {
    if (matched_ > 0 && goes_on_from(byte, out)) return;
    switch (kKinds<kPolicy>[byte]) {
        case Kind::carriage_return:
            late_carriage_return(out);
            carriage_return_ = true;
            break;
        case Kind::line_feed: line_feed(out); break;
        default: plain_or_escaped(byte, out);
    }
    if (matched_ == 0) break_full_line(out);
}

template <QpPolicy kPolicy>
void QpEncoder<kPolicy>::plain_or_escaped(uint8_t byte, Cursor& out) {
    const Kind kind = kKinds<kPolicy>[byte];
    const bool escaped = kind == Kind::escape || (kind == Kind::dot && column_ == 0);
    late_carriage_return(out);
    if (kind == Kind::letter_f && previous_ == '\n') {
        matched_ = 1;
        return;
    }
    if (escaped) {
        put_byte(out, '=');
        put_byte(out, static_cast<uint8_t>(basis_hex[byte >> 4]));
        put_byte(out, static_cast<uint8_t>(basis_hex[byte & 15]));
    } else {
        put_byte(out, byte);
    }
    column_ += escaped ? 3 : 1;
    previous_ = byte;
}

// Holds the next letter of "From" back too, or writes those that were.
template <QpPolicy kPolicy>
bool QpEncoder<kPolicy>::goes_on_from(uint8_t byte, Cursor& out) {
    if (matched_ < kFrom.size() && byte == kFrom[matched_]) {
        ++matched_;
        return true;
    }
    release_from(matched_ == kFrom.size() && byte == ' ', out);
    return false;
}

template <QpPolicy kPolicy>
void QpEncoder<kPolicy>::release_from(bool guarded, Cursor& out) {
    const std::string_view text = guarded ? "=46rom" : kFrom.substr(0, matched_);
    put_text(out, text);
    column_ += text.size();
    previous_ = text.back();
    matched_ = 0;
    break_full_line(out);
}

template <QpPolicy kPolicy>
void QpEncoder<kPolicy>::late_carriage_return(Cursor& out) {
    if (!carriage_return_) return;
    put_text(out, "=0D");
    column_ += 3;
    carriage_return_ = false;
}

template <QpPolicy kPolicy>
void QpEncoder<kPolicy>::line_feed(Cursor& out) {
    if (!carriage_return_) {
        put_text(out, "=0A");  // Kept: the column stays where it is.
        return;
    }
    if (previous_ == ' ' || previous_ == '\t') put_text(out, "=\r\n");
    put_text(out, "\r\n");
    column_ = 0;
    previous_ = '\n';
    carriage_return_ = false;
}

template <QpPolicy kPolicy>
void QpEncoder<kPolicy>::break_full_line(Cursor& out) {
    if (column_ < kFullLine) return;
    put_text(out, "=\r\n");
    column_ = 0;
    previous_ = '\n';
}

template <QpPolicy kPolicy>
bool QpEncoder<kPolicy>::finish(bool ended_early, Cursor& out) {
    if (ended_early) return false;
    if (matched_ > 0) {
        if (!kPolicy.may_end_in_from) return false;
        release_from(false, out);
    }
    if (column_ != 0) put_text(out, "=\r\n");
    put_text(out, "\r\n");
    return true;
}

template class QpEncoder<kQpText>;
template class QpEncoder<kQpTextFile>;
template class QpEncoder<kQpBinary>;

}  // namespace vel
