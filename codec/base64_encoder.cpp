// Kept: text that fills its last line is followed by an empty line; so is no text at all (finish).
#include "codec/base64_encoder.h"

#include <algorithm>

void out64(int a, int b, int c, int pad, char* out) {
    out[0] = basis_64[(a >> 2) & 63];
    out[1] = basis_64[(a & 3) << 4 | ((b >> 4) & 15)];
    out[2] = pad == 2 ? '=' : basis_64[(b & 15) << 2 | ((c >> 6) & 3)];
    out[3] = pad == 0 ? basis_64[c & 63] : '=';
}

namespace vel {
namespace {

constexpr PairTable kPairs = pairs_of(basis_64);

void put_line(const uint8_t* in, Cursor& out) {
    for (const uint8_t* end = in + Base64Encoder::kLineBytes; in != end; in += 3) {
        put_pairs(out, kPairs, in[0], in[1], in[2]);
    }
    put_text(out, "\r\n");
}

}  // namespace

void Base64Encoder::quantum(const uint8_t* three, Cursor& out) {
    put_pairs(out, kPairs, three[0], three[1], three[2]);
    end_full_line(out);
}

void Base64Encoder::end_full_line(Cursor& out) {
    if (++quanta_ < kLineQuanta) return;
    put_text(out, "\r\n");
    quanta_ = 0;
}

void Base64Encoder::more(Bytes in, Cursor& out) {
    if (held_count_ > 0) {
        const std::size_t taken = std::min(held_.size() - held_count_, in.size());
        std::copy_n(in.begin(), taken, held_.begin() + held_count_);
        held_count_ += taken;
        in = in.subspan(taken);
        if (held_count_ < held_.size()) return;
        quantum(held_.data(), out);
        held_count_ = 0;
    }
    for (; quanta_ > 0 && in.size() >= 3; in = in.subspan(3)) quantum(in.data(), out);
    for (; in.size() >= kLineBytes; in = in.subspan(kLineBytes)) put_line(in.data(), out);
    for (; in.size() >= 3; in = in.subspan(3)) quantum(in.data(), out);
    std::copy(in.begin(), in.end(), held_.begin());
    held_count_ = in.size();
}

void Base64Encoder::finish(Cursor& out) {
    if (held_count_ > 0) {
        std::fill(held_.begin() + held_count_, held_.end(), uint8_t{0});
        out64(held_[0], held_[1], held_[2], static_cast<int>(held_.size() - held_count_), reinterpret_cast<char*>(out));
        out += 4;
        end_full_line(out);
    }
    put_text(out, "\r\n");  // Kept: behind a full line too.
}

}  // namespace vel
