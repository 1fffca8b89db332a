// Letter case and character classes of ASCII, whatever the C library's locale says. Every test
// takes any char: bytes above 127 belong to no class.
#ifndef VEL_FRAME_ASCII_H
#define VEL_FRAME_ASCII_H

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace vel::ascii {

constexpr bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }
constexpr bool is_upper(char c) { return c >= 'A' && c <= 'Z'; }
constexpr bool is_lower(char c) { return c >= 'a' && c <= 'z'; }
constexpr bool is_alpha(char c) { return is_upper(c) || is_lower(c); }
constexpr bool is_control(char c) { return (c >= 0 && c < 32) || c == 127; }

constexpr char to_lower(char c) { return is_upper(c) ? static_cast<char>(c - 'A' + 'a') : c; }
constexpr char to_upper(char c) { return is_lower(c) ? static_cast<char>(c - 'a' + 'A') : c; }

constexpr bool same(char a, char b) { return to_lower(a) == to_lower(b); }

constexpr bool equals_ignoring_case(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), same);
}

constexpr bool starts_with_ignoring_case(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() && equals_ignoring_case(text.substr(0, prefix.size()), prefix);
}

inline std::string lower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), to_lower);
    return result;
}

}  // namespace vel::ascii

#endif
