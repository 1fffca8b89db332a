// Uuencode from handle to handle.
//
// Kept: a blank stands before the begin line's end (uuencode).
#include <climits>
#include <string>

#include "codec/handle_io.h"
#include "codec/uu_begin.h"
#include "codec/uu_decoder.h"
#include "codec/uu_encoder.h"
#include "frame/at_boundary.h"
#include "frame/file_pool.h"
#include "vel/codec.h"

namespace vel {
namespace {

// A file's lines, as many as a number of bytes holds.
class LimitedLines {
  public:
    LimitedLines(VEL_FILE& file, int32_t limit) : file_(&file), left_(limit == 0 ? kNoLimit : limit) {}

    int64_t left() const { return left_; }

    // The next line; a line longer than what is left is handed out too, and uses it up.
    std::optional<std::string_view> next() {
        std::string_view line;
        if (file_.next(line) != LineResult::line) return std::nullopt;
        const auto length = static_cast<int64_t>(line.size());
        exceeded_ = length > left_;
        left_ = exceeded_ ? 0 : left_ - length;
        return line;
    }

    // The line handed out last did not fit.
    bool exceeded() const { return exceeded_; }

  private:
    static constexpr int64_t kNoLimit = INT64_MAX;  // no file is that long

    LineFile file_;
    int64_t left_;
    bool exceeded_ = false;
};

// Reads up to the begin line. Returns the name on it, or nothing when there is none within the limit.
std::optional<std::string> find_begin(LimitedLines& lines) {
    for (auto line = lines.next(); line && !lines.exceeded(); line = lines.next()) {
        if (const auto name = uu_begin_name(*line)) return std::string(*name);
    }
    return std::nullopt;
}

// Decodes data lines. Returns true when an end line closed them.
bool decode_data(LimitedLines& lines, CollectedOutput& output) {
    constexpr int64_t kShortestEnd = 3;
    UuDecoder decoder;
    while (lines.left() > 0) {
        const auto line = lines.next();
        if (!line || !output.make_room(UuDecoder::kRoom)) return false;
        const auto kind = decoder.take(*line, output.cursor());
        if (kind == UuDecoder::Line::data) continue;
        if (kind != UuDecoder::Line::over) return kind == UuDecoder::Line::end;
        if (lines.left() < kShortestEnd) return false;
        const auto last = lines.next();
        return last && decoder.closes(*last);
    }
    return false;
}

}  // namespace
}  // namespace vel

extern "C" {

int uuencode(int in, int out, const char* name, const char* mode) {
    VEL_FILE* file = vel::pooled_file(out);
    if (!file) return 0;
    return vel::at_boundary(-1, [=] {
        using namespace std::string_literals;
        vel::LineFile output(file);
        const std::string begin = "begin "s + (mode ? mode : "644") + ' ' + (name ? name : "unknown.dat") + " \r\n";
        if (output.put(begin) != 1) return 0;
        const auto write = [&](std::string_view text) { return output.put(text) == 1; };
        return vel::encode_rest(in, vel::UuEncoder(), write) ? 1 : -1;
    });
}

int uudecode(int in, int32_t limit, int out, char** name) {
    VEL_FILE* file = vel::pooled_file(in);
    if (!file || limit < 0) return 0;
    return vel::at_boundary(0, [=] {
        vel::LimitedLines lines(*file, limit);
        const auto found = vel::find_begin(lines);
        if (!found) return 0;
        vel::CollectedOutput output(out, vel::kLargeBlock);
        const bool closed = vel::decode_data(lines, output);
        const bool written = output.write_all();
        if (name && !found->empty()) *name = vel::copy_text(*found).release();
        return closed && written ? 1 : 0;
    });
}

}  // extern "C"
