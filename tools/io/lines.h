// The lines of a message file with their offsets, as the library's line reader hands them out.
#ifndef VEL_TOOLS_IO_LINES_H
#define VEL_TOOLS_IO_LINES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/io/library_owned.h"

namespace vel::command {

struct Line {
    std::string_view text;  // with its line end; lives until the next line is read
    uint32_t start;
    uint32_t end;
    bool is_whole;  // neither a piece of a line that is longer than the reader's, nor cut at its start
};

class LineReader {
  public:
    explicit LineReader(const std::string& path);  // throws Failure

    uint32_t file_size() const { return size_; }
    VEL_FILE* file() const { return file_.get(); }

    std::optional<Line> next();  // throws Failure

    // Goes to the beginning of a line.
    void go_to(uint32_t offset);

    // Goes to some place before an offset from which the line that holds it comes whole, unless it is
    // longer than the reader's.
    void go_near(uint32_t offset);

    uint32_t position() const;

  private:
    LineFile file_;
    uint32_t size_;
    bool at_line_start_ = true;
};

}  // namespace vel::command

#endif
