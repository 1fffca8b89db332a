#include "tools/message/address_text.h"

#include <string_view>

#include "tools/message/address_list.h"
#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr std::string_view kSpecials = "()<>@,;:\\\"[]";  // of RFC 822, but for "."

std::string joined(const recipient& record, std::string_view phrase, std::string_view comment) {
    const std::string_view canonical = text_of(record.canon);
    std::string text(canonical);
    if (!phrase.empty() && kind_of(record) != std::string_view("group")) {
        const bool bracketed = canonical.starts_with('<');
        text = std::string(phrase).append(bracketed ? " " : " <").append(canonical).append(bracketed ? "" : ">");
    }
    if (!comment.empty()) text.append(" (").append(comment).append(")");
    return text;
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') result += '\\';
        result += c;
    }
    return result.append("\"");
}

Readable readable_phrase(std::string_view phrase) {
    const bool in_quotes = phrase.size() >= 2 && phrase.front() == '"' && phrase.back() == '"';
    const std::string_view inside = in_quotes ? phrase.substr(1, phrase.size() - 2) : phrase;
    Readable text = readable(inside);
    if (text.text == inside) return {std::string(phrase), text.converted};
    if (in_quotes || text.text.find_first_of(kSpecials) != std::string::npos) text.text = quoted(text.text);
    return text;
}

}  // namespace

std::string address_text(const recipient& record) {
    return joined(record, text_of(record.phrase), text_of(record.comment));
}

Readable readable_address(const recipient& record) {
    const Readable phrase = readable_phrase(text_of(record.phrase));
    const Readable comment = readable(text_of(record.comment));
    Readable whole = readable(joined(record, {}, {}));
    return {joined(record, phrase.text, comment.text), phrase.converted && comment.converted && whole.converted};
}

}  // namespace vel::command
