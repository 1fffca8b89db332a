#include "tools/message/parameters.h"

#include <unordered_map>

#include "tools/text/ascii.h"
#include "tools/text/hex_escapes.h"

namespace vel::command {
namespace {

using Parameters = std::unordered_map<std::string, std::string>;

std::string unquoted(std::string_view value) {
    value = trimmed(value);
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
    return std::string(value);
}

// The first of several equal names counts.
Parameters by_name(const ms* chain) {
    Parameters result;
    for (const ms* node = chain; node; node = node->next) {
        const std::string_view text = text_of(node->text);
        const std::size_t equals = text.find('=');
        if (equals == std::string_view::npos) continue;
        result.emplace(lower(trimmed(text.substr(0, equals))), unquoted(text.substr(equals + 1)));
    }
    return result;
}

std::string without_percent_escapes(std::string_view text) { return without_hex_escapes(text, '%'); }

struct Value {
    std::string bytes;
    std::optional<std::string> charset = {};  // nothing: none is named

    Readable converted() const { return charset ? readable(bytes, *charset) : readable(bytes); }
};

// "charset'language'bytes" (RFC 2231 section 4).
Value extended_value(std::string_view text) {
    const std::size_t first = text.find('\'');
    const std::size_t second = first == std::string_view::npos ? first : text.find('\'', first + 1);
    if (second == std::string_view::npos) return {without_percent_escapes(text), ""};
    return {without_percent_escapes(text.substr(second + 1)), std::string(text.substr(0, first))};
}

// name*0, name*1*, ... (RFC 2231 section 3); a section whose name ends in "*" has percent escapes, the first of
// these sections a charset.
std::optional<Value> continued_value(const Parameters& all, const std::string& name) {
    std::optional<Value> result;
    for (int section = 0;; ++section) {
        const std::string key = name + "*" + std::to_string(section);
        if (const auto plain = all.find(key); plain != all.end()) {
            if (!result) result.emplace();
            result->bytes += plain->second;
        } else if (const auto escaped = all.find(key + "*"); escaped == all.end()) {
            return result;
        } else if (!result) {
            result = extended_value(escaped->second);
        } else {
            result->bytes += without_percent_escapes(escaped->second);
        }
    }
}

}  // namespace

std::optional<Readable> parameter(const ms* chain, std::string_view name) {
    if (!chain) return std::nullopt;
    const Parameters all = by_name(chain);
    const std::string key(name);
    if (const auto extended = all.find(key + "*"); extended != all.end()) {
        return extended_value(extended->second).converted();
    }
    if (const auto value = continued_value(all, key)) return value->converted();
    const auto plain = all.find(key);
    return plain == all.end() ? std::nullopt : std::optional(readable(plain->second));
}

}  // namespace vel::command
