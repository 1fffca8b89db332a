// JIS to Shift-JIS from handle to handle.
//
// Kept: the count is one of bytes produced, and holds between lines (convert_jis_lines).
#include "codec/japanese_lines.h"

#include "codec/handle_io.h"
#include "codec/japanese_decoder.h"
#include "frame/at_boundary.h"
#include "frame/file_pool.h"
#include "vel/japanese.h"

namespace vel {
namespace {

// The line reader hands out no last line that ends where a block does. It stands in the file's line buffer
// all the same, and a text must not lose it.
LineResult next_line(VEL_FILE& file, std::string_view& line) {
    const int32_t before = file.pos;
    const LineResult result = LineFile(&file).next(line);
    if (result != LineResult::end || file.pos == before) return result;
    line = {file.line, static_cast<std::size_t>(file.pos - before)};
    return LineResult::line;
}

}  // namespace

bool convert_jis_lines(VEL_FILE& in, int64_t count, int out, bool repairs) {
    constexpr std::size_t kRoom = JisDecoder::room(kLineMax);
    JisDecoder decoder(repairs);
    CollectedOutput output(out, kRoom + kLargeBlock);
    std::string_view line;
    // A piece of a line that is too long for the line reader is no line.
    for (bool inside = false; inside || output.produced() < count; inside = !line.ends_with('\n')) {
        const LineResult result = next_line(in, line);
        if (result == LineResult::error) return false;
        if (result == LineResult::end) break;
        if (!output.make_room(kRoom)) return false;
        decoder.more(bytes_of(line), output.cursor());
    }
    if (!output.make_room(kRoom)) return false;
    decoder.finish(output.cursor());
    return output.write_all();
}

bool convert_jis(int in, int out, bool repairs) {
    VEL_FILE* file = pooled_file(in);
    return file && convert_jis_lines(*file, kAllLines, out, repairs);
}

}  // namespace vel

extern "C" int JIS2ShiftJIS(int in, int32_t count, int out, int repair) {
    VEL_FILE* file = vel::pooled_file(in);
    if (!file) return -1;
    return vel::at_boundary(-1, [=] { return vel::convert_jis_lines(*file, count, out, repair == 1) ? 0 : -1; });
}
