// Header texts of any characters as they go into a message: ASCII, in lines that are short enough (RFC 2047).
#ifndef VEL_TOOLS_COMPOSE_HEADER_WORDS_H
#define VEL_TOOLS_COMPOSE_HEADER_WORDS_H

#include <cstddef>
#include <string>
#include <string_view>

namespace vel::command {

bool is_ascii(std::string_view text);

// The value of a field whose text is free, UTF-8 without line breaks, behind so many characters of its line. Words of
// ASCII stay as they are, encoded words too; a reader gets the very text back. Blanks begin new lines.
std::string header_text(std::string_view text, std::size_t column);

// A display name or a comment.
std::string phrase_words(std::string_view text, std::size_t column);

// A text for a parameter in quotes, such as a file name: as it stands, or in encoded words on one line, which is
// what mail programs read there.
std::string parameter_words(std::string_view text);

}  // namespace vel::command

#endif
