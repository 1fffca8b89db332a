// Kept: words are parted by blanks alone; a tab is part of a word (word_at).
// Kept: words of ASCII never begin a new line, and a comment begins at column 0 again (encode_words).
// Kept: a comment ends at its first ")" (encode_text).
#include "codec/encoded_word_encoder.h"

#include <algorithm>

#include "codec/encoded_word_placing.h"

namespace vel {
namespace {

// The word that begins at a place, perhaps an empty one.
std::string_view word_at(std::string_view text, std::size_t place) {
    text.remove_prefix(place);
    return text.substr(0, text.find(' '));
}

// The words from a place on of which each has a byte above 127, the blanks between them included.
std::string_view run_at(std::string_view text, std::size_t place) {
    std::size_t end = place + word_at(text, place).size();
    while (end < text.size()) {
        const std::string_view next = word_at(text, end + 1);
        if (is_ascii(next)) break;
        end += 1 + next.size();
    }
    return text.substr(place, end - place);
}

// Never the first character.
void trim_end(std::string& text, std::string_view characters) {
    while (text.size() > 1 && characters.find(text.back()) != characters.npos) text.pop_back();
}

std::string prefix_of(const WordEncoding& encoding) {
    return "=?" + encoding.charset + (encoding.method == WordMethod::q ? "?Q?" : "?B?");
}

}  // namespace

bool is_ascii(std::string_view text) {
    return std::none_of(text.begin(), text.end(), [](char c) { return static_cast<uint8_t>(c) > 127; });
}

std::string encode_words(std::string_view text, const WordEncoding& encoding) {
    if (is_ascii(text)) return std::string(text);
    const std::string prefix = prefix_of(encoding);
    std::string result;
    std::int64_t column = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view word = word_at(text, at);
        if (is_ascii(word)) {
            result.append(word).append(" ");
            column += static_cast<std::int64_t>(word.size()) + 1;
            at += word.size() + 1;
        } else {
            const std::string_view run = run_at(text, at);
            place_words(result, column, prefix, encoded_text(run, encoding.method), encoding.method);
            at += run.size() + 1;
        }
    }
    trim_end(result, " \r\n");
    return result;
}

std::string encode_text(std::string_view text, const WordEncoding& encoding) {
    if (!encoding.enabled) return std::string(text);
    std::string result;
    do {
        const std::size_t open = text.find('(');
        const std::size_t close = open == text.npos ? open : text.find(')', open);
        if (close == text.npos) {
            result += encode_words(text, encoding);
            break;
        }
        result += encode_words(text.substr(0, open), encoding);
        result += encoding.before_comment;
        result += encode_words(text.substr(open + 1, close - open - 1), encoding);
        result += ')';
        text.remove_prefix(close + 1);
    } while (!text.empty());
    trim_end(result, " ");
    return result;
}

}  // namespace vel
