#include "tools/report/html_lines.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "tools/text/ascii.h"
#include "tools/text/utf8.h"

namespace vel::command {
namespace {

constexpr std::size_t kLongestWord = 12;
constexpr std::string_view kLineEnd = "\r\n";

constexpr std::array<std::string_view, 3> kHidden{"script", "style", "title"};
constexpr std::array<std::string_view, 14> kParagraphs{"p",  "h1", "h2", "h3", "h4",    "h5",         "h6",
                                                       "ul", "ol", "dl", "hr", "table", "blockquote", "pre"};
constexpr std::array<std::string_view, 9> kBlocks{"br", "div", "tr", "td", "th", "li", "dt", "dd", "body"};

struct Entity {
    std::string_view name;
    char character;
};
constexpr std::array kEntities{
    Entity{"lt", '<'},   Entity{"gt", '>'},    Entity{"amp", '&'},
    Entity{"quot", '"'}, Entity{"apos", '\''}, Entity{"nbsp", ' '},
};

template <std::size_t size>
bool contains(const std::array<std::string_view, size>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// "#64", "#x40"; 0: it is none.
uint32_t numbered_character(std::string_view entity) {
    if (!entity.starts_with('#')) return 0;
    const bool is_hexadecimal = entity.substr(1).starts_with('x');
    const char* const start = entity.data() + (is_hexadecimal ? 2 : 1);
    uint32_t code = 0;
    const auto [end, error] = std::from_chars(start, entity.data() + entity.size(), code, is_hexadecimal ? 16 : 10);
    const bool is_character = error == std::errc() && end == entity.data() + entity.size() && code <= 0x10FFFF &&
                              (code < 0xD800 || code > 0xDFFF);
    return is_character ? code : 0;
}

}  // namespace

void HtmlLines::more(std::string_view html, std::string& text) {
    for (const char c : html) take(c, text);
}

void HtmlLines::finish(std::string& text) {
    if (phase_ == Phase::entity) end_entity(false, text);
    break_line(1, text);
}

void HtmlLines::take(char c, std::string& text) {
    switch (phase_) {
        case Phase::text:
            word_.clear();
            if (c == '<') {
                phase_ = Phase::tag;
            } else if (c == '&' && hidden_.empty()) {
                phase_ = Phase::entity;
            } else {
                put(std::string_view(&c, 1), text);
            }
            break;
        case Phase::entity:
            if (c != ';' && word_.size() < kLongestWord && kBlanks.find(c) == kBlanks.npos && c != '<' && c != '&') {
                word_ += c;
                break;
            }
            end_entity(c == ';', text);
            if (c != ';') take(c, text);
            break;
        case Phase::tag:
            if (quote_ == '\0' && c == '>') {
                end_tag(text);
            } else if (c == '<' && !hidden_.empty()) {
                word_.clear();  // only its end tag counts in what is left out
            } else if (c == '"' || c == '\'') {
                quote_ = quote_ == c || !hidden_.empty() ? '\0' : quote_ == '\0' ? c : quote_;
            } else if (word_.size() < kLongestWord && !word_.ends_with(' ')) {
                word_ += kBlanks.find(c) == kBlanks.npos ? lower(c) : ' ';
                if (word_ == "!--") phase_ = Phase::comment;
            }
            break;
        case Phase::comment: take_in_comment(c); break;
    }
}

// Keeps the last two bytes.
void HtmlLines::take_in_comment(char c) {
    if (c == '>' && word_.ends_with("--")) {
        phase_ = Phase::text;
        return;
    }
    word_.erase(0, word_.size() - 1);
    word_ += c;
}

void HtmlLines::end_tag(std::string& text) {
    phase_ = Phase::text;
    std::string_view name = word_;
    const bool is_end = name.starts_with('/');
    if (is_end) name.remove_prefix(1);
    name = name.substr(0, name.find_first_of(" /"));
    if (!hidden_.empty()) {
        if (is_end && name == hidden_) hidden_.clear();
    } else if (!is_end && contains(kHidden, name)) {
        hidden_ = name;
    } else if (contains(kParagraphs, name)) {
        break_line(2, text);
    } else if (contains(kBlocks, name)) {
        break_line(1, text);
    }
}

void HtmlLines::end_entity(bool has_semicolon, std::string& text) {
    phase_ = Phase::text;
    const std::string name = lower(word_);
    const auto* known = std::find_if(kEntities.begin(), kEntities.end(), [&](auto& row) { return row.name == name; });
    constexpr uint32_t no_break_space = 0xA0;
    const uint32_t code = numbered_character(name);
    std::string piece;
    if (code == no_break_space) {
        piece = ' ';
    } else if (known != kEntities.end()) {
        piece = known->character;
    } else if (code != 0) {
        append_utf8(piece, static_cast<char32_t>(code));
    } else {
        piece.append("&").append(word_).append(has_semicolon ? ";" : "");
    }
    put(piece, text);
}

void HtmlLines::put(std::string_view piece, std::string& text) {
    if (!hidden_.empty()) return;
    if (trimmed(piece).empty()) {
        has_blank_ = true;
        return;
    }
    if (has_blank_ && ends_ == 0) text += ' ';
    text += piece;
    has_blank_ = false;
    ends_ = 0;
}

void HtmlLines::break_line(std::size_t ends, std::string& text) {
    for (; ends_ < ends; ++ends_) text += kLineEnd;
    has_blank_ = false;
}

}  // namespace vel::command
