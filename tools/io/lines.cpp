#include "tools/io/lines.h"

#include <sys/stat.h>

#include "tools/io/exit_code.h"

namespace vel::command {
namespace {

constexpr uint32_t kLongestLine = 1024;  // what one call of the library's reader hands out

uint32_t size_of(const VEL_FILE& file) {
    struct stat status {};
    if (::fstat(file.fd, &status) != 0) throw Failure::of_system_call(Exit::io_error, "");
    return static_cast<uint32_t>(status.st_size);
}

}  // namespace

LineReader::LineReader(const std::string& path) : file_(FileOpen(path.c_str(), kForReading)) {
    if (!file_) throw Failure::of_system_call(Exit::no_input, "");
    size_ = size_of(*file_);
}

std::optional<Line> LineReader::next() {
    const uint32_t start = position();
    char* text = nullptr;
    const int result = GetLine(file_.get(), &text);
    if (result < 0) throw Failure(Exit::io_error, "cannot be read");
    if (result == 0) return std::nullopt;
    const uint32_t end = position();
    const std::string_view line(text, end - start);
    const bool ends = line.ends_with('\n') || end == size_;
    const bool is_whole = at_line_start_ && ends;
    at_line_start_ = ends;
    return Line{line, start, end, is_whole};
}

void LineReader::go_to(uint32_t offset) {
    SetFilePos(file_.get(), static_cast<int32_t>(offset));
    at_line_start_ = true;
}

void LineReader::go_near(uint32_t offset) {
    go_to(offset < kLongestLine ? 0 : offset - kLongestLine);
    at_line_start_ = offset < kLongestLine;
}

uint32_t LineReader::position() const { return static_cast<uint32_t>(GetFilePos(file_.get())); }

}  // namespace vel::command
