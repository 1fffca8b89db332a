// Mailbox files: where one message ends and the next begins.
#include <algorithm>
#include <cstdio>
#include <string_view>

#include "frame/ascii.h"
#include "vel/rfc822.h"

namespace vel {
namespace {

constexpr std::string_view kSeparator = "From ";

// Bytes of a line's buffer. Kept: a longer line comes in pieces, each of which counts as a line.
constexpr int kLineSize = 1024;

// Kept: of the n characters behind the last blank, line end included, the first (n + 3) / 2 must be
// digits: all four of a year before LF or CR LF, three of a year that ends the text.
bool ends_in_year(std::string_view line) {
    const std::string_view last = line.substr(line.rfind(' ') + 1);
    const std::size_t tested = (last.size() + 3) / 2;
    return tested <= last.size() && std::all_of(last.begin(), last.begin() + tested, ascii::is_digit);
}

bool is_separator(std::string_view line) {
    return line.size() > kSeparator.size() && line.starts_with(kSeparator) && line.find(':') != line.rfind(':') &&
           ends_in_year(line);
}

}  // namespace
}  // namespace vel

extern "C" {

int isNextMsgHeader(const char* line) { return line && vel::is_separator(line); }

int ParseBody(FILE* stream, long* position, int* lines) {
    if (!stream) return -1;
    char line[vel::kLineSize];
    int count = 0;
    int result = -1;
    long start = std::ftell(stream);
    while (std::fgets(line, sizeof line, stream)) {
        if (isNextMsgHeader(line) && std::fseek(stream, start, SEEK_SET) == 0) {
            result = 1;
            break;
        }
        ++count;
        start = std::ftell(stream);
    }
    if (position) *position = start;
    if (lines) *lines += count;
    return result;
}

}  // extern "C"
