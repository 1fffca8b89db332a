// What a codec makes of bytes that it gets in pieces, from heap blocks of exactly their size into heap
// blocks of exactly the room that it asks for.
#ifndef VEL_TESTS_CODEC_FED_H
#define VEL_TESTS_CODEC_FED_H

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "codec/bytes.h"

namespace vel::test {

template <class Write>
void append_written(std::string& text, std::size_t room, Write write) {
    const auto block = std::make_unique_for_overwrite<uint8_t[]>(room);
    Cursor end = block.get();
    write(end);
    text.append(block.get(), end);
}

struct Fed {
    std::string text;
    bool accepted = true;  // the codec may end there
};

template <class Codec>
Fed fed(Bytes bytes, std::size_t piece) {
    Codec codec;
    Fed result;
    for (bool over = false; !bytes.empty() && !over; bytes = bytes.subspan(std::min(piece, bytes.size()))) {
        const Bytes part = bytes.first(std::min(piece, bytes.size()));
        const std::vector<uint8_t> copy(part.begin(), part.end());
        append_written(result.text, Codec::room(copy.size()), [&](Cursor& end) { codec.more(copy, end); });
        if constexpr (requires { codec.over(); }) over = codec.over();
    }
    append_written(result.text, Codec::room(0), [&](Cursor& end) {
        if constexpr (requires { codec.finish(end); }) {
            codec.finish(end);
        } else {
            result.accepted = codec.finish(false, end);
        }
    });
    return result;
}

template <class Codec>
std::string fed_text(std::string_view text, std::size_t piece) {
    return fed<Codec>(bytes_of(text), piece).text;
}

}  // namespace vel::test

#endif
