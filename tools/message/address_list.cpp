#include "tools/message/address_list.h"

#include <nlohmann/json.hpp>

#include "tools/text/ascii.h"
#include "tools/text/text_forms.h"

namespace vel::command {
namespace {

// More than nearly every address has. The parser looks at all that it is given, so it is given no more
// than it needs: a list of many addresses would take time that grows with its square.
constexpr std::size_t kWindow = 256;

// Closes a "[" that is open at the end of the window, as some "]" behind it does; the first of the two may
// be escaped by what stands before it.
constexpr std::string_view kEndMark = "]]";

// The last one that no backslash stands before; npos when there is none.
std::size_t last_closing_bracket(std::string_view text) {
    std::size_t at = text.rfind(']');
    while (at != std::string_view::npos && at > 0 && text[at - 1] == '\\') at = text.rfind(']', at - 1);
    return at;
}

constexpr bool stands_between(char c) { return c == ',' || kBlanks.find(c) != std::string_view::npos; }

// The library refuses a list whose double quotes do not pair up; those behind a backslash do not count.
bool quotes_pair_up(std::string_view text) {
    bool even = true;
    for (std::size_t at = 0; (at = text.find_first_of("\"\\", at)) != std::string_view::npos; ++at) {
        if (text[at] == '"') {
            even = !even;
        } else {
            ++at;
        }
    }
    return even;
}

Json text_or_null(const char* text) { return text && *text ? Json(json_text(text)) : Json(); }

}  // namespace

AddressListReader::AddressListReader(std::string_view text)
    : text_(text), changed_(text.substr(0, text.find('\0'))), last_closing_(last_closing_bracket(changed_)) {
    if (quotes_pair_up(changed_)) return;
    refusal_ = "the double quotes of the list do not pair up";
    changed_.clear();
}

// Parses the address at the position within a window that an end mark and a NUL follow. When the parser
// stops before them, the rest of the text would make no difference.
const char* AddressListReader::parse(recipient& record) {
    char* const start = changed_.data() + at_;
    for (std::size_t window = kWindow; window + kEndMark.size() < changed_.size() - at_; window *= 2) {
        char* const edge = start + window;
        const std::string kept(edge, kEndMark.size() + 1);
        const bool closed_behind = last_closing_ != std::string::npos && last_closing_ >= at_ + window;
        kEndMark.copy(edge, closed_behind ? kEndMark.size() : 0);
        edge[closed_behind ? kEndMark.size() : 0] = '\0';
        const char* const end = ParseAddr(start, &record);
        kept.copy(edge, kept.size());
        if (end < edge) return end;
        Clear_RP(&record);
    }
    return ParseAddr(start, &record);
}

AddressListReader::Stretch AddressListReader::stretch(std::size_t start, std::size_t end, const char* left_out) const {
    while (start < end && stands_between(text_[start])) ++start;
    while (start < end && stands_between(text_[end - 1])) --end;
    return {text_.substr(start, end - start), start, left_out};
}

std::optional<AddressListReader::Stretch> AddressListReader::next(recipient& record) {
    while (at_ < changed_.size()) {
        Clear_RP(&record);
        if (changed_[at_] == ',') ++at_;
        const std::size_t start = at_;
        at_ = static_cast<std::size_t>(parse(record) - changed_.data());
        const Stretch found = stretch(start, at_, record.canon ? nullptr : "it is no address");
        if (!found.text.empty()) return found;
    }
    Clear_RP(&record);
    if (at_ >= text_.size()) return std::nullopt;
    const Stretch rest =
        stretch(std::exchange(at_, text_.size()), text_.size(), refusal_ ? refusal_ : "a NUL ends the list");
    return rest.text.empty() ? std::nullopt : std::optional(rest);
}

const char* kind_of(const recipient& record) {
    const std::string_view canonical = text_of(record.canon);
    if (canonical.starts_with("<@")) return "source route";
    return canonical.ends_with(';') && *record.phrase ? "group" : "mailbox";
}

Json address_json(const recipient& record) {
    return {
        {"kind", kind_of(record)},
        {"canonical", text_or_null(record.canon)},
        {"phrase", text_or_null(record.phrase)},
        {"comment", text_or_null(record.comment)},
        {"local", text_or_null(record.local)},
        {"domain", text_or_null(record.domain)},
    };
}

}  // namespace vel::command
