// Kept: the pad bytes of the last group are those of the line before it (finish).
#include "codec/uu_encoder.h"

#include <algorithm>

#include "codec/uu_alphabet.h"

namespace vel {
namespace {

constexpr PairTable kPairs = pairs_of(kUuAlphabet);

// Encodes the first `count` of a line's bytes; those up to the next multiple of three are read too.
void put_line(const uint8_t* in, std::size_t count, Cursor& out) {
    put_byte(out, static_cast<uint8_t>(kUuAlphabet[count]));
    for (std::size_t at = 0; at < count; at += 3) put_pairs(out, kPairs, in[at], in[at + 1], in[at + 2]);
    put_text(out, "\r\n");
}

}  // namespace

void UuEncoder::more(Bytes in, Cursor& out) {
    const uint8_t* last = nullptr;
    while (count_ + in.size() >= kLineBytes) {
        if (count_ > 0) {
            const std::size_t taken = kLineBytes - count_;
            std::copy_n(in.begin(), taken, line_.begin() + count_);
            put_line(line_.data(), kLineBytes, out);
            count_ = 0;
            in = in.subspan(taken);
        } else {
            last = in.data();
            put_line(last, kLineBytes, out);
            in = in.subspan(kLineBytes);
        }
    }
    if (last) std::copy_n(last, kLineBytes, line_.begin());
    std::copy(in.begin(), in.end(), line_.begin() + count_);
    count_ += in.size();
}

void UuEncoder::finish(Cursor& out) {
    if (count_ > 0) put_line(line_.data(), count_, out);
    put_text(out, "`\r\nend\r\n\r\n");
}

}  // namespace vel
