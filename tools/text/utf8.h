// One step through a text that ought to be UTF-8 (RFC 3629).
#ifndef VEL_TOOLS_TEXT_UTF8_H
#define VEL_TOOLS_TEXT_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

namespace vel::command {

constexpr char32_t kNotUtf8 = 0xFFFFFFFF;

struct Character {
    char32_t code;       // kNotUtf8: the byte belongs to no character
    std::size_t length;  // in bytes, never 0
};

// The first character of a text that is not empty. Surrogates, overlong forms and code points beyond
// U+10FFFF are not UTF-8; of such a sequence each byte stands alone.
Character first_character(std::string_view text);

bool is_utf8(std::string_view text);

// The longest beginning of at most size bytes that cuts no character in two.
std::string_view cut_to(std::string_view text, std::size_t size);

void append_utf8(std::string& text, char32_t code);

// Characters that move the cursor, change a terminal's state or the order in which text is read.
bool steers_a_terminal(char32_t code);

// Calls on_character(code, bytes) for each character of a text.
template <class OnCharacter>
void for_each_character(std::string_view text, OnCharacter&& on_character) {
    while (!text.empty()) {
        const Character character = first_character(text);
        on_character(character.code, text.substr(0, character.length));
        text.remove_prefix(character.length);
    }
}

}  // namespace vel::command

#endif
