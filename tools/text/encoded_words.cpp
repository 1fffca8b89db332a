#include "tools/text/encoded_words.h"

#include <algorithm>
#include <array>
#include <utility>

#include "tools/text/ascii.h"
#include "tools/text/charset.h"
#include "tools/text/hex_escapes.h"
#include "tools/text/utf8.h"

namespace vel::command {
namespace {

constexpr std::string_view kOpening = "=?";
constexpr std::string_view kClosing = "?=";
constexpr std::size_t kLongestCharset = 75;  // with its language; a whole word should be no longer

// "_" is a blank.
std::string from_q(std::string_view text) {
    std::string with_blanks(text);
    std::replace(with_blanks.begin(), with_blanks.end(), '_', ' ');
    return without_hex_escapes(with_blanks, '=');
}

constexpr auto kBase64Values = [] {
    std::array<signed char, 256> values{};
    for (auto& value : values) value = -1;
    signed char next = 0;
    for (const char c : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")) {
        values[static_cast<unsigned char>(c)] = next++;
    }
    return values;
}();

// Nothing when other characters stand in it. Padding ends a piece, behind which another one may begin.
std::optional<std::string> from_b(std::string_view text) {
    std::string bytes;
    unsigned bits = 0;
    int count = 0;
    for (const char c : text) {
        const int value = kBase64Values[static_cast<unsigned char>(c)];
        if (c == '=') {
            count = 0;
        } else if (value >= 0) {
            bits = bits << 6 | static_cast<unsigned>(value);
            count += 6;
        } else if (kBlanks.find(c) == std::string_view::npos) {
            return std::nullopt;
        }
        if (count >= 8) bytes += static_cast<char>(bits >> (count -= 8) & 0xFF);
    }
    return bytes;
}

struct Word {
    std::string_view charset;
    std::string bytes;
    std::size_t end;  // offset behind it
};

class Decoder {
  public:
    explicit Decoder(std::string_view text) : text_(text) {}

    std::optional<std::string> run() {
        std::size_t at = 0;  // all before it is done
        for (std::size_t opening = 0; (opening = text_.find(kOpening, opening)) != std::string_view::npos;) {
            const std::optional<Word> word = word_at(opening);
            if (!word) {
                opening += kOpening.size() - 1;  // its "?" may be the end of another "=?"
                continue;
            }
            take_text(text_.substr(at, opening - at), true);
            take_word(*word);
            at = opening = word->end;
        }
        take_text(text_.substr(at), false);
        if (failed_ || !is_utf8(result_)) return std::nullopt;
        return std::move(result_);
    }

  private:
    // "=?" charset ["*" language] "?" "Q" or "B" "?" text "?="
    std::optional<Word> word_at(std::size_t opening) {
        constexpr std::string_view kQ = "?Q?", kB = "?B?";
        const std::size_t start = opening + kOpening.size();
        const std::string_view head = text_.substr(start, kLongestCharset + kQ.size());
        const std::size_t length = head.find('?');
        if (length == 0 || length == std::string_view::npos) return std::nullopt;
        const std::string_view charset = head.substr(0, length), marker = head.substr(length, kQ.size());
        const bool q = same(marker, kQ);
        if (charset.find_first_of(kBlanks) != std::string_view::npos || (!q && !same(marker, kB))) return std::nullopt;
        const std::size_t content = start + length + marker.size();
        const std::size_t closing = closing_behind(content);
        if (closing == std::string_view::npos) return std::nullopt;
        const std::string_view encoded = text_.substr(content, closing - content);
        auto bytes = q ? from_q(encoded) : from_b(encoded);
        if (!bytes) return std::nullopt;
        return Word{charset.substr(0, charset.find('*')), std::move(*bytes), closing + kClosing.size()};
    }

    // What was found is kept, so that a text of many openings is not searched for each of them.
    std::size_t closing_behind(std::size_t position) {
        if (closing_ < position) closing_ = text_.find(kClosing, position);
        return closing_;
    }

    void take_text(std::string_view text, bool word_follows) {
        if (word_follows && in_words_ && trimmed(text).empty()) return;
        end_words();
        result_ += text;
    }

    void take_word(const Word& word) {
        if (!same(word.charset, charset_)) end_words();
        charset_ = word.charset;
        bytes_ += word.bytes;
        in_words_ = true;
    }

    void end_words() {
        if (!in_words_) return;
        const auto converted = to_utf8(std::exchange(bytes_, {}), charset_);
        result_ += converted.value_or("");
        failed_ = failed_ || !converted;
        in_words_ = false;
    }

    const std::string_view text_;
    std::size_t closing_ = 0;  // the last one found; npos: there is none any more
    std::string result_;
    bool in_words_ = false;     // a word came last
    std::string_view charset_;  // of the words that are not converted yet
    std::string bytes_;         // of these
    bool failed_ = false;
};

}  // namespace

std::optional<std::string> without_encoded_words(std::string_view text) { return Decoder(text).run(); }

}  // namespace vel::command
