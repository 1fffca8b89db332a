// Texts that a shell reads.
#ifndef VEL_TOOLS_TEXT_SHELL_WORD_H
#define VEL_TOOLS_TEXT_SHELL_WORD_H

#include <string>
#include <string_view>

namespace vel::command {

// A text as one word of a POSIX shell, in quotes where it needs them.
inline std::string shell_word(std::string_view text) {
    constexpr std::string_view plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_@%+=:,./-";
    if (!text.empty() && text.find_first_not_of(plain) == text.npos) return std::string(text);
    std::string word = "'";
    for (const char c : text) c == '\'' ? word.append("'\\''") : word.append(1, c);
    return word.append("'");
}

}  // namespace vel::command

#endif
