// Finding encoded words, "=?charset?Q?text?=", in header text (RFC 1522 section 2).
#ifndef VEL_CODEC_ENCODED_WORD_READER_H
#define VEL_CODEC_ENCODED_WORD_READER_H

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "codec/encoded_word_text.h"

namespace vel {

// Views into the text where the word was found.
struct EncodedWord {
    std::string_view before;  // what stands between the word before and this one
    std::string_view whole;   // from "=?" to "?="
    std::string_view charset;
    std::string_view text;
    WordMethod method;
};

class EncodedWordReader {
  public:
    explicit EncodedWordReader(std::string_view text) : text_(text) {}

    // The next complete word; none when only rest() is left.
    std::optional<EncodedWord> next();

    std::string_view rest() const { return text_.substr(at_); }

  private:
    struct Marker {
        std::size_t place;
        WordMethod method;
    };
    std::optional<Marker> marker_behind(std::size_t place);

    std::string_view text_;
    std::size_t at_ = 0;

    // Where each kind of marker was found last. It is sought again only when it has been passed, so that
    // a text is searched once for each kind, however many words it has.
    std::array<std::size_t, 4> places_{};
};

// The charset of the first encoded word.
std::optional<std::string_view> first_charset(std::string_view text);

}  // namespace vel

#endif
