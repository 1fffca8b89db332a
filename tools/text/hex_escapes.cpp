#include "tools/text/hex_escapes.h"

#include <charconv>

namespace vel::command {

std::string without_hex_escapes(std::string_view text, char mark) {
    constexpr std::size_t kDigits = 2;
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned byte = 0;
        const char* const digits = text.data() + i + 1;
        const bool escape = text[i] == mark && text.size() - i > kDigits &&
                            std::from_chars(digits, digits + kDigits, byte, 16).ptr == digits + kDigits;
        result += escape ? static_cast<char>(byte) : text[i];
        if (escape) i += kDigits;
    }
    return result;
}

}  // namespace vel::command
