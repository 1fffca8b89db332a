#include "platform/config/ini_file.h"

#include <functional>
#include <utility>

#include "frame/ascii.h"
#include "platform/config/ini_line.h"

namespace vel {

bool IniFile::Name::operator==(const Name& other) const {
    return key == other.key && ascii::equals_ignoring_case(section, other.section);
}

// The section adds its length and letters in either case; few sections share a key.
std::size_t IniFile::Hash::operator()(const Name& name) const {
    constexpr std::size_t kMultiplier = 31;
    std::size_t section = name.section.size();
    for (const char c : name.section) section = section * kMultiplier + static_cast<unsigned char>(ascii::to_lower(c));
    return std::hash<std::string_view>()(name.key) ^ section;
}

IniFile::IniFile(std::string text) : text_(std::move(text)) {
    IniScanner lines(text_);
    while (const auto line = lines.next()) {
        if (line->kind != IniLine::Kind::setting || line->section.empty()) continue;
        const auto value = unquoted(line->value);
        // A text ends at its NUL, here as for every caller. The first setting of a name stays.
        settings_.emplace(Name{line->section, line->key}, value.substr(0, value.find('\0')));
    }
}

std::optional<std::string_view> IniFile::find(std::string_view section, std::string_view key) const {
    const auto found = settings_.find(Name{section, key});
    if (found == settings_.end()) return std::nullopt;
    return found->second;
}

}  // namespace vel
