// The encoded words of a header text as people read them.
#ifndef VEL_TOOLS_TEXT_ENCODED_WORDS_H
#define VEL_TOOLS_TEXT_ENCODED_WORDS_H

#include <optional>
#include <string>
#include <string_view>

namespace vel::command {

// The text with its encoded words in UTF-8 (RFC 2047, with the languages of RFC 2231 section 5); nothing when a
// word, or what stands between them, cannot be converted. Blanks between two words go; adjacent words of one
// charset are converted together, since senders cut characters in two. As readers do, words are taken where
// they should not stand too, within quotes or without blanks around them; what is no word stays as it stands.
std::optional<std::string> without_encoded_words(std::string_view text);

}  // namespace vel::command

#endif
