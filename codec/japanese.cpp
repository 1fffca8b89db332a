// Single characters, and Shift-JIS to JIS from descriptor to descriptor.
#include "vel/japanese.h"

#include <algorithm>

#include "codec/handle_io.h"
#include "codec/japanese_encoder.h"
#include "codec/japanese_half_width.h"
#include "frame/at_boundary.h"

namespace vel {
namespace {

void convert_in_place(DoubleByte (*convert)(DoubleByte), uint8_t* first, uint8_t* second) {
    if (!first || !second) return;
    const DoubleByte result = convert({*first, *second});
    *first = result.first;
    *second = result.second;
}

// Blocks go to the encoder in pieces, the smaller the longer the mark is, so that there is room for marks
// of any length.
bool encode(int in, int out, std::string_view mark) {
    const std::size_t piece = std::max<std::size_t>(kLargeBlock / (mark.size() + 1), 1);
    const std::size_t room = JisEncoder::room(piece, mark.size());
    const auto block = std::make_unique_for_overwrite<uint8_t[]>(kLargeBlock);
    JisEncoder encoder(mark);
    CollectedOutput output(out, room);
    ssize_t got = 0;
    while ((got = read_again(in, block.get(), kLargeBlock)) > 0) {
        for (Bytes rest(block.get(), static_cast<std::size_t>(got)); !rest.empty();) {
            const std::size_t taken = std::min(piece, rest.size());
            if (!output.make_room(room)) return false;
            encoder.more(rest.first(taken), output.cursor());
            rest = rest.subspan(taken);
        }
    }
    if (got < 0 || !output.make_room(room)) return false;
    encoder.finish(output.cursor());
    return output.write_all();
}

}  // namespace
}  // namespace vel

extern "C" {

void sjis2jis(uint8_t* first, uint8_t* second) { vel::convert_in_place(vel::jis_of, first, second); }
void jis2sjis(uint8_t* first, uint8_t* second) { vel::convert_in_place(vel::sjis_of, first, second); }

void half2full(int in, uint8_t next, uint8_t* first, uint8_t* second) {
    if (!first || !second || !vel::is_half_width(*first)) return;
    const vel::FullWidth full = vel::full_width(*first, next);
    *first = full.sjis.first;
    *second = full.sjis.second;
    if (!full.takes_next) ::lseek(in, -1, SEEK_CUR);
}

int ShiftJIS2JIS(int in, int out, const char* mark) {
    return vel::at_boundary(-1, [=] { return vel::encode(in, out, mark ? mark : "") ? 0 : -1; });
}

}  // extern "C"
