#include "tools/settings/value_kinds.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <system_error>
#include <vector>

#include "tools/settings/zone.h"
#include "tools/text/ascii.h"
#include "tools/text/charset_names.h"
#include "tools/text/instant.h"

namespace vel::command {
namespace {

constexpr const char* kNotANumber = "is no whole number below 4294967296; the default is taken";

bool is_one_of(std::string_view value, std::initializer_list<std::string_view> words) {
    return std::any_of(words.begin(), words.end(), [=](std::string_view word) { return same(value, word); });
}

constexpr bool is_letter_or_digit(char c) { return (c >= '0' && c <= '9') || (lower(c) >= 'a' && lower(c) <= 'z'); }

bool is_number(std::string_view text) {
    uint32_t number = 0;
    const auto end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end;
}

std::vector<std::string_view> words_of(std::string_view list) {
    constexpr std::string_view between = ", \t";
    std::vector<std::string_view> words;
    for (;;) {
        list.remove_prefix(std::min(list.find_first_not_of(between), list.size()));
        if (list.empty()) return words;
        words.push_back(list.substr(0, list.find_first_of(between)));
        list.remove_prefix(words.back().size());
    }
}

}  // namespace

std::string any_text(const std::string&) { return {}; }

std::string yes_or_no(const std::string& value) {
    return is_one_of(value, {"YES", "NO"}) ? "" : "is neither YES nor NO";
}

std::string true_or_false(const std::string& value) {
    return is_one_of(value, {"TRUE", "FALSE"}) ? "" : "is neither TRUE nor FALSE";
}

std::string a_number(const std::string& value) { return is_number(value) ? "" : kNotANumber; }

std::string a_wait(const std::string& value) {
    return read_duration(value) ? "" : "is no time such as 90s, 15m, 4h or 5d";
}

std::string some_waits(const std::string& value) {
    for (std::string_view rest = value;;) {
        const std::size_t comma = rest.find(',');
        if (read_duration(trimmed(rest.substr(0, comma))).value_or(0) == 0) return "is no list of times such as 5m, 1h";
        if (comma == rest.npos) return {};
        rest.remove_prefix(comma + 1);
    }
}

std::string a_host(const std::string& value) {
    return value.empty() ? "is empty: addresses and trace lines are left without it" : a_host_or_nothing(value);
}

std::string a_host_or_nothing(const std::string& value) {
    const bool good = std::all_of(value.begin(), value.end(),
                                  [](char c) { return is_letter_or_digit(c) || c == '-' || c == '.' || c == '_'; });
    return good ? "" : "is no host or domain: letters, digits, \"-\" and \".\" make one";
}

std::string a_charset(const std::string& value) { return known_charset(value) ? "" : "is no charset that is known"; }

// The library takes anything else for B too, which a slip of the pen would not want.
std::string a_word_encoding(const std::string& value) {
    return is_one_of(value, {"Quoted-printable", "Base64", "B"})
               ? ""
               : "is neither Quoted-printable nor Base64: encoded words are written in B";
}

// ftext (RFC 5322 section 3.6.8).
std::string a_field_name(const std::string& value) {
    const bool good = !value.empty() &&
                      std::all_of(value.begin(), value.end(), [](char c) { return c > ' ' && c < 127 && c != ':'; });
    return good ? "" : "is no name of a header field";
}

std::string a_zone(const std::string& value) {
    if (begins(value, kLeavesZoneAlone) || is_zone(value)) return {};
    return value.empty() ? "is empty, which means UTC" : "is no time zone that is known here, so it means UTC";
}

std::string log_levels(const std::string& value) {
    if (value.empty() || same(value, "all")) return {};
    const auto words = words_of(value);
    if (std::none_of(words.begin(), words.end(), is_number)) return "names no level, so all are written";
    const auto is_level = [](std::string_view word) { return is_one_of(word, {"1", "3", "6"}); };
    const auto other = std::find_if_not(words.begin(), words.end(), is_level);
    if (other == words.end()) return {};
    return std::string("holds \"").append(*other).append("\", which is no level: they are 1, 3 and 6");
}

}  // namespace vel::command
