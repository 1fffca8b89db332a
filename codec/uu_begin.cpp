// Kept: a mode may have any digits, not only octal ones.
// Kept: the name is the rest of the line behind one blank, blanks included, so the blank that
//       uuencode writes behind a name comes back as a part of it.
#include "codec/uu_begin.h"

#include <algorithm>

#include "frame/ascii.h"
#include "vel/codec.h"

namespace vel {
namespace {

// Cuts the next word off a line, with the blanks before it and the one behind it.
std::string_view take_word(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    const std::string_view word = line.substr(0, line.find(' '));
    line.remove_prefix(std::min(word.size() + 1, line.size()));
    return word;
}

}  // namespace

std::optional<std::string_view> uu_begin_name(std::string_view line) {
    constexpr std::string_view kLineEnds("\r\n\0", 3);
    if (!ascii::starts_with_ignoring_case(line, "BEGIN")) return std::nullopt;
    line = line.substr(0, line.find_first_of(kLineEnds));
    if (take_word(line).size() != std::string_view("BEGIN").size()) return std::nullopt;
    const std::string_view mode = take_word(line);
    if (mode.empty() || !std::all_of(mode.begin(), mode.end(), ascii::is_digit)) return std::nullopt;
    return line.substr(0, kUuNameMax);
}

}  // namespace vel

extern "C" int IsuuencodeBegin(const char* line, char* name) {
    if (!line) return 0;
    const auto found = vel::uu_begin_name(line);
    if (!found) return 0;
    if (name) *std::copy(found->begin(), found->end(), name) = '\0';
    return 1;
}
