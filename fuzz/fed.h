// What a codec makes of bytes that it gets in pieces, from heap blocks of exactly their size into heap
// blocks of exactly the room that it asks for.
#ifndef VEL_FUZZ_FED_H
#define VEL_FUZZ_FED_H

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "codec/bytes.h"

namespace vel::fuzz {

template <class Write>
void append_written(std::string& text, std::size_t room, Write write) {
    const auto block = std::make_unique<uint8_t[]>(room);
    Cursor end = block.get();
    write(end);
    text.append(block.get(), end);
}

template <class Codec>
std::string fed(Bytes bytes, std::size_t piece) {
    Codec codec;
    std::string text;
    for (bool over = false; !bytes.empty() && !over; bytes = bytes.subspan(std::min(piece, bytes.size()))) {
        const Bytes part = bytes.first(std::min(piece, bytes.size()));
        const std::vector<uint8_t> copy(part.begin(), part.end());
        append_written(text, Codec::room(copy.size()), [&](Cursor& end) { codec.more(copy, end); });
        if constexpr (requires { codec.over(); }) over = codec.over();
    }
    append_written(text, Codec::room(0), [&](Cursor& end) {
        if constexpr (requires { codec.finish(end); }) {
            codec.finish(end);
        } else {
            codec.finish(false, end);
        }
    });
    return text;
}

inline void expect_same(const std::string& a, const std::string& b) {
    if (a != b) std::abort();
}

}  // namespace vel::fuzz

#endif
