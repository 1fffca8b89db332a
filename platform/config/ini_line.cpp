#include "platform/config/ini_line.h"

#include <utility>

#include "frame/ascii.h"

namespace vel {
namespace {

// Some editors put it before the first line of UTF-8.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// The end goes first: what is blank altogether becomes the empty text at its beginning, which is
// where a value belongs.
std::string_view trimmed(std::string_view text) {
    while (!text.empty() && ascii::is_space(text.back())) text.remove_suffix(1);
    while (!text.empty() && ascii::is_space(text.front())) text.remove_prefix(1);
    return text;
}

std::string_view bracketed(std::string_view content) {
    const auto close = content.find(']');
    return close == content.npos ? std::string_view() : trimmed(content.substr(1, close - 1));
}

}  // namespace

std::string_view IniScanner::take_line() {
    const auto end = rest_.find('\n');
    const auto line = rest_.substr(0, end == rest_.npos ? end : end + 1);
    rest_.remove_prefix(line.size());
    return line;
}

std::optional<IniLine> IniScanner::next() {
    if (rest_.empty()) return std::nullopt;
    IniLine line{IniLine::Kind::other, take_line(), {}, {}, {}};
    auto content = line.whole;
    if (std::exchange(at_start_, false) && content.starts_with(kByteOrderMark)) {
        content.remove_prefix(kByteOrderMark.size());
    }
    content = trimmed(content);
    if (content.starts_with('[')) {
        section_ = bracketed(content);
        line.kind = IniLine::Kind::section;
    } else if (const auto equals = content.find('=');
               equals != content.npos && content[0] != ';' && content[0] != '#') {
        line.kind = IniLine::Kind::setting;
        line.key = trimmed(content.substr(0, equals));
        line.value = trimmed(content.substr(equals + 1));
    }
    line.section = section_;
    return line;
}

std::string_view unquoted(std::string_view value) {
    const bool quoted = value.size() >= 2 && value.front() == '"' && value.back() == '"';
    return quoted ? value.substr(1, value.size() - 2) : value;
}

}  // namespace vel
