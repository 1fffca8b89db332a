#include "tools/settings/ini_lines.h"

#include <algorithm>

namespace vel::command {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view without_blanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\n\v\f\r";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

// Empty without the closing bracket.
std::string_view in_brackets(std::string_view content) {
    const std::size_t end = content.find(']');
    return end == content.npos ? std::string_view() : without_blanks(content.substr(1, end - 1));
}

}  // namespace

IniLines::IniLines(std::string_view text) : rest_(text) {
    if (rest_.starts_with(kByteOrderMark)) rest_.remove_prefix(kByteOrderMark.size());
}

std::optional<IniLine> IniLines::next() {
    if (rest_.empty()) return std::nullopt;
    const std::size_t end = rest_.find('\n');
    IniLine line{IniLine::Kind::stray, ++number_, without_blanks(rest_.substr(0, end)), section_, {}};
    rest_.remove_prefix(end == rest_.npos ? rest_.size() : end + 1);
    const std::size_t equals = line.content.find('=');
    if (line.content.empty() || line.content.front() == ';' || line.content.front() == '#') {
        line.kind = IniLine::Kind::nothing;
    } else if (line.content.front() == '[') {
        line.kind = IniLine::Kind::section;
        line.section = section_ = in_brackets(line.content);
    } else if (equals != line.content.npos) {
        line.kind = IniLine::Kind::setting;
        line.key = without_blanks(line.content.substr(0, equals));
    }
    return line;
}

}  // namespace vel::command
