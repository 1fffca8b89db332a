#include "tools/report/field_value.h"

#include <algorithm>
#include <charconv>

#include "tools/text/ascii.h"
#include "tools/text/hex_escapes.h"
#include "tools/text/utf8.h"

namespace vel::command {
namespace {

// The length of what begins with a quote or a parenthesis, to its end; 0: it has none.
std::size_t enclosed_length(std::string_view text) {
    const bool is_quoted = text.front() == '"';
    std::size_t depth = 1;
    for (std::size_t at = 1; at < text.size(); ++at) {
        if (text[at] == '\\') {
            ++at;
        } else if (!is_quoted && text[at] == '(') {
            ++depth;
        } else if (text[at] == (is_quoted ? '"' : ')') && --depth == 0) {
            return at + 1;
        }
    }
    return 0;
}

// "\x{E9}" becomes the character; what is no such escape stays.
std::string without_unicode_escapes(std::string_view text) {
    constexpr std::string_view opening = "\\x{";
    std::string result;
    while (!text.empty()) {
        const std::size_t escape = std::min(text.find(opening), text.size());
        result += text.substr(0, escape);
        text.remove_prefix(escape);
        if (text.empty()) break;
        uint32_t code = 0;
        const auto [end, error] = std::from_chars(text.data() + opening.size(), text.data() + text.size(), code, 16);
        const bool is_escape = error == std::errc() && end != text.data() + text.size() && *end == '}' &&
                               code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
        if (is_escape) append_utf8(result, static_cast<char32_t>(code));
        const std::size_t length = is_escape ? static_cast<std::size_t>(end + 1 - text.data()) : opening.size();
        if (!is_escape) result += opening;
        text.remove_prefix(length);
    }
    return result;
}

}  // namespace

Typed typed(std::string_view field) {
    const std::size_t end = field.find(';');
    const std::string_view type = trimmed(field.substr(0, end));
    const bool is_type = end != std::string_view::npos && type.find_first_of(" \t<>@") == std::string_view::npos;
    return is_type ? Typed{type, trimmed(field.substr(end + 1))} : Typed{{}, trimmed(field)};
}

std::string without_comments(std::string_view field) {
    std::string result;
    for (bool all_end = true; !field.empty();) {
        const std::size_t plain = std::min(all_end ? field.find_first_of("\"(") : field.npos, field.size());
        result += field.substr(0, plain);
        field.remove_prefix(plain);
        if (field.empty()) break;
        const std::size_t length = enclosed_length(field);
        all_end = length > 0;
        if (field.front() == '"') result += field.substr(0, length);
        field.remove_prefix(length);
    }
    return std::string(trimmed(result));
}

std::string_view comment_of(std::string_view field) {
    const std::size_t opening = field.find('('), closing = field.rfind(')');
    if (opening == field.npos || closing == field.npos || closing < opening) return {};
    return field.substr(opening + 1, closing - opening - 1);
}

std::string address_in(std::string_view field) {
    const std::string text = without_comments(field);
    auto [type, value] = typed(text);
    if (value.starts_with('<') && value.ends_with('>')) value = value.substr(1, value.size() - 2);
    if (same(type, "utf-8")) return without_unicode_escapes(value);
    const bool hides_at = value.find('@') == value.npos && value.find("+40") != value.npos;
    return hides_at ? without_hex_escapes(value, '+') : std::string(value);
}

std::string host_in(std::string_view field) { return std::string(typed(without_comments(field)).value); }

}  // namespace vel::command
