// Letter case and blanks of ASCII, whatever the locale says, and texts that may be null.
#ifndef VEL_TOOLS_TEXT_ASCII_H
#define VEL_TOOLS_TEXT_ASCII_H

#include <algorithm>
#include <string>
#include <string_view>

namespace vel::command {

constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

inline std::string lower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char c) { return lower(c); });
    return result;
}

constexpr bool same(std::string_view a, std::string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lower(x) == lower(y); });
}

constexpr bool begins(std::string_view text, std::string_view prefix) {
    return same(text.substr(0, prefix.size()), prefix);
}

constexpr std::string_view kBlanks = " \t\r\n";

constexpr std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// A text of a record that may be null.
constexpr std::string_view text_of(const char* text) { return text ? std::string_view(text) : std::string_view(); }

}  // namespace vel::command

#endif
