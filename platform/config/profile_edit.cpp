#include "platform/config/profile_edit.h"

#include <cstddef>
#include <initializer_list>
#include <optional>

#include "frame/ascii.h"
#include "platform/config/ini_line.h"

namespace vel {
namespace {

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string whole;
    for (const auto part : parts) whole += part;
    return whole;
}

bool in_section(const IniLine& line, SettingName name) {
    return !line.section.empty() && ascii::equals_ignoring_case(line.section, name.section);
}

bool names(const IniLine& line, SettingName name) {
    return line.kind == IniLine::Kind::setting && line.key == name.key && in_section(line, name);
}

// What stands behind the "=": in quotes where the bare value would lose blanks or quotes.
std::string written(std::string_view value) {
    const std::string bare = joined({"=", value});
    const bool survives = unquoted(IniScanner(bare).next()->value) == value;
    return survives ? std::string(value) : joined({"\"", value, "\""});
}

bool has_line_break(std::string_view text) { return text.find_first_of("\r\n") != text.npos; }

// The line end that the file uses; LF for a file without any.
std::string_view line_end_of(std::string_view text) {
    const auto end = text.find('\n');
    return end != text.npos && end > 0 && text[end - 1] == '\r' ? "\r\n" : "\n";
}

std::size_t offset_in(std::string_view text, std::string_view part) {
    return static_cast<std::size_t>(part.data() - text.data());
}

// Puts a line at an offset, behind a line end where the text has none there.
std::string with_line_at(std::string_view text, std::size_t offset, std::string_view line) {
    const auto end = line_end_of(text);
    const auto before = text.substr(0, offset);
    const bool cut = !before.empty() && before.back() != '\n';
    return joined({before, cut ? end : "", line, end, text.substr(offset)});
}

}  // namespace

bool is_writable(SettingName name, std::string_view value) {
    if (name.section.empty() || name.key.empty()) return false;
    if (has_line_break(name.section) || has_line_break(name.key) || has_line_break(value)) return false;
    const std::string section = joined({"[", name.section, "]"});
    const std::string setting = joined({name.key, "="});
    return IniScanner(section).next()->section == name.section && IniScanner(setting).next()->key == name.key;
}

std::string with_setting(std::string_view text, SettingName name, std::string_view value) {
    std::optional<std::size_t> section_end;
    IniScanner lines(text);
    while (const auto line = lines.next()) {
        if (names(*line, name)) {
            const auto start = offset_in(text, line->value);
            return joined({text.substr(0, start), written(value), text.substr(start + line->value.size())});
        }
        if (line->kind != IniLine::Kind::other && in_section(*line, name)) {
            section_end = offset_in(text, line->whole) + line->whole.size();
        }
    }
    const std::string setting = joined({name.key, "=", written(value)});
    if (section_end) return with_line_at(text, *section_end, setting);
    const auto end = line_end_of(text);
    return with_line_at(text, text.size(), joined({text.empty() ? "" : end, "[", name.section, "]", end, setting}));
}

std::string without_setting(std::string_view text, SettingName name) {
    std::string kept;
    kept.reserve(text.size());
    IniScanner lines(text);
    while (const auto line = lines.next()) {
        if (!names(*line, name)) kept += line->whole;
    }
    return kept;
}

}  // namespace vel
