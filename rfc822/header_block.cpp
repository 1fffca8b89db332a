// Reads a header block (RFC 822 section 3.1). Departures from the RFC:
//  - a line is what the line reader hands out: each piece of a line of more than 1024 bytes counts as
//    a line, and an end of line that comes as a piece of its own ends the block;
//  - a NUL ends its line's text;
//  - a line of white space continues its field, it does not end the block;
//  - a field that is folded over more than 63 KB ends the block.
#include "rfc822/header_block.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "frame/ascii.h"
#include "frame/at_boundary.h"
#include "frame/critical_section.h"
#include "frame/file_pool.h"
#include "frame/line_file.h"
#include "frame/log.h"
#include "rfc822/header_field.h"
#include "rfc822/parser_locks.h"

namespace vel {
namespace {

constexpr char kLogName[] = "ParseHdr";

// What stands between the lines of a folded field, and in the buffer with its NUL.
constexpr std::string_view kFold = "\r\n\t";

// A field's room is counted in units. The count grows by one a line at most, is kept from field to
// field, and ends the block at its limit: that bounds what a block makes us hold. The buffer itself
// grows as it must.
constexpr std::size_t kUnit = 1024;
constexpr std::size_t kUnitsLimit = 64;

// The line without its line end. Kept: a NUL ends its text, as it does for every reader of lines.
std::string_view text_of(std::string_view line) {
    line = line.substr(0, line.find('\0'));
    if (line.ends_with('\n')) line.remove_suffix(1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

// Lines of a block, counted from 1; 0 for none.
struct LineNumbers {
    int last = 0;
    int status = 0;  // of the last line of a Status field that another line follows
};

class BlockReader {
  public:
    BlockReader(VEL_FILE* file, addr822& header, LineNumbers& lines) : file_(file), record_(header), lines_(lines) {
        field_.reserve(kUnit + 1);
    }

    // Reads to the empty line, the end of the file or the limit. False when a line cannot be read.
    bool read();

  private:
    enum class Next { line, nothing };

    Next take(std::string_view text);
    Next continue_field(std::string_view text);
    void finish_field();
    int store() { return field_.empty() ? static_cast<int>(header_code::none) : store_field(field_, record_); }

    LineFile file_;
    HeaderRecord record_;
    LineNumbers& lines_;
    std::string field_;
    std::size_t units_ = 1;
};

bool BlockReader::read() {
    std::string_view line;
    LineResult result;
    while ((result = file_.next(line)) == LineResult::line) {
        const Next next = take(text_of(line));
        ++lines_.last;
        if (next == Next::nothing) return true;
    }
    if (result == LineResult::error) return false;
    store();
    return true;
}

// Kept: the text may be a piece of a longer line; it is taken for a line all the same.
BlockReader::Next BlockReader::take(std::string_view text) {
    if (!text.empty() && ascii::is_space(text.front())) return continue_field(text);
    finish_field();
    field_ = text;
    return text.empty() ? Next::nothing : Next::line;
}

// Kept: what follows the white space may be nothing.
BlockReader::Next BlockReader::continue_field(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (field_.size() + text.size() + kFold.size() + 1 > units_ * kUnit && ++units_ == kUnitsLimit) {
        log_line_as(kLogName, kLogError, "too many headers to parse.");
        store();
        return Next::nothing;
    }
    field_.append(kFold).append(text);
    return Next::line;
}

// The lines counted so far are those up to the field's last.
void BlockReader::finish_field() {
    if (store() == header_code::status) lines_.status = lines_.last;
}

int failed(const char* what) {
    log_line_as(kLogName, kLogError, "%s", what);
    return 0;
}

int read_block(int handle, addr822& header, LineNumbers& lines) {
    VEL_FILE* file = pooled_file(handle);
    if (!file) return failed("getline failed.");
    return at_boundary(
        0, [] { failed("malloc failed."); },
        [&] {
            BlockReader block(file, header, lines);
            return at_boundary(
                0, [] { failed("realloc failed."); }, [&] { return block.read() ? 1 : failed("getline failed."); });
        });
}

}  // namespace
}  // namespace vel

int ST_ParseHdr(int handle, addr822* header, int* lines, int* status_line) {
    vel::LineNumbers numbers;
    const int result = header ? vel::read_block(handle, *header, numbers) : 0;
    if (lines) *lines = numbers.last;
    if (status_line) *status_line = numbers.status;
    return result;
}

extern "C" {

int VEL_ParseHdr(int handle, addr822* header, int* lines, int* status_line) {
    const vel::CriticalSectionHeld held(csParseHdr);
    return ST_ParseHdr(handle, header, lines, status_line);
}

int ParseHdr(int handle, addr822* header, int* lines, int* status_line) {
    return VEL_ParseHdr(handle, header, lines, status_line);
}

}  // extern "C"
