#include "tools/text/text_forms.h"

#include <cstdio>

#include "tools/text/utf8.h"

namespace vel::command {
namespace {

constexpr char32_t kBytesAsCharacters = 0xF700;
constexpr char32_t kFirstByteCharacter = kBytesAsCharacters + 0x80;
constexpr char32_t kLastByteCharacter = kBytesAsCharacters + 0xFF;

std::string formatted(const char* format, unsigned value) {
    char text[16];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

void append_escape(std::string& text, char32_t code, std::string_view bytes) {
    switch (code) {
        case '\\': text += "\\\\"; return;
        case '\t': text += "\\t"; return;
        case '\r': text += "\\r"; return;
        case '\n': text += "\\n"; return;
        default: break;
    }
    text += code == kNotUtf8 || code < 0x80 ? formatted("\\x%02x", static_cast<unsigned char>(bytes.front()))
                                            : formatted("\\u%04x", static_cast<unsigned>(code));
}

}  // namespace

std::string visible(std::string_view bytes) {
    std::string text;
    for_each_character(bytes, [&](char32_t code, std::string_view encoded) {
        if (code == '\\' || code == kNotUtf8 || steers_a_terminal(code)) {
            append_escape(text, code, encoded);
        } else {
            text += encoded;
        }
    });
    return text;
}

std::string json_text(std::string_view bytes) {
    std::string text;
    for_each_character(bytes, [&](char32_t code, std::string_view encoded) {
        const bool taken = code >= kFirstByteCharacter && code <= kLastByteCharacter;
        if (code != kNotUtf8 && !taken) {
            text += encoded;
            return;
        }
        for (const char byte : encoded) append_utf8(text, kBytesAsCharacters + static_cast<unsigned char>(byte));
    });
    return text;
}

}  // namespace vel::command
