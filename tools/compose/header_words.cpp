#include "tools/compose/header_words.h"

#include <algorithm>
#include <vector>

#include "tools/text/ascii.h"
#include "tools/text/utf8.h"

namespace vel::command {
namespace {

constexpr std::string_view kBefore = "=?UTF-8?Q?";
constexpr std::string_view kBehind = "?=";
constexpr std::size_t kLongestWord = 75;  // RFC 2047 section 2
constexpr std::size_t kLastColumn = 76;
constexpr std::size_t kLongestPlainWord = 900;  // that a line can take, with the name of a field

constexpr bool is_printable(char c) { return c >= ' ' && c <= '~'; }

// A character in "Q", as it may stand everywhere that encoded words may (RFC 2047 section 5, rule 3).
std::string in_q(std::string_view character) {
    constexpr std::string_view kDigits = "0123456789ABCDEF", kPlain = "!*+-/";
    const char first = character.front();
    const bool is_letter = (first >= '0' && first <= '9') || (lower(first) >= 'a' && lower(first) <= 'z');
    if (first == ' ') return "_";
    if (is_letter || kPlain.find(first) != kPlain.npos) return std::string(character);
    std::string escaped;
    for (const char c : character) {
        const auto byte = static_cast<unsigned char>(c);
        escaped.append({'=', kDigits[byte >> 4], kDigits[byte & 15]});
    }
    return escaped;
}

// The encoded words of a text, none of which cuts a character in two; the first one has less room.
std::vector<std::string> encoded_words(std::string_view text, std::size_t column) {
    std::vector<std::string> words{std::string(kBefore)};
    std::size_t room = std::max(kLongestWord - std::min(column, kLongestWord), kLongestWord / 2);
    for_each_character(text, [&](char32_t, std::string_view bytes) {
        const std::string character = in_q(bytes);
        if (words.back().size() + character.size() + kBehind.size() > room) {
            words.back().append(kBehind);
            words.emplace_back(kBefore);
            room = kLongestWord;
        }
        words.back().append(character);
    });
    words.back().append(kBehind);
    return words;
}

// Words joined by one blank each; a line that grows too long goes on behind a line break. An empty one stands for
// another blank.
std::string folded(const std::vector<std::string>& words, std::size_t column) {
    std::string text;
    for (const std::string& word : words) {
        const bool is_first = &word == &words.front();
        column += (is_first ? 0 : 1) + word.size();
        if (!is_first && !word.empty() && column > kLastColumn) {
            text.append("\r\n");
            column = 1 + word.size();
        }
        text.append(is_first ? "" : " ").append(word);
    }
    return text;
}

std::vector<std::string> split(std::string_view text) {
    std::vector<std::string> words;
    for (std::size_t blank = 0; blank != text.npos; text.remove_prefix(blank == text.npos ? 0 : blank + 1)) {
        blank = text.find(' ');
        words.emplace_back(text.substr(0, blank));
    }
    return words;
}

bool needs_encoding(std::string_view word) {
    return word.size() > kLongestPlainWord || !std::all_of(word.begin(), word.end(), is_printable);
}

}  // namespace

bool is_ascii(std::string_view text) {
    return std::none_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) > 127; });
}

// What needs no encoding before the first word that does, and behind the last one, stays.
std::string header_text(std::string_view text, std::size_t column) {
    std::vector<std::string> words = split(text);
    const auto first = std::find_if(words.begin(), words.end(), needs_encoding);
    if (first == words.end()) return folded(words, column);
    const auto last = std::find_if(words.rbegin(), words.rend(), needs_encoding).base();
    std::string middle;
    for (auto word = first; word != last; ++word) middle.append(word == first ? "" : " ").append(*word);
    for (auto word = words.begin(); word != first; ++word) column += word->size() + 1;
    std::vector<std::string> result(words.begin(), first);
    for (std::string& word : encoded_words(middle, column)) result.push_back(std::move(word));
    result.insert(result.end(), last, words.end());
    return folded(result, column);
}

std::string phrase_words(std::string_view text, std::size_t column) {
    return folded(encoded_words(text, column), column);
}

std::string parameter_words(std::string_view text) {
    const bool is_plain = std::all_of(text.begin(), text.end(), is_printable) && text.find("=?") == text.npos;
    if (is_plain) return std::string(text);
    std::string words;
    for (const std::string& word : encoded_words(text, 0)) words.append(words.empty() ? "" : " ").append(word);
    return words;
}

}  // namespace vel::command
