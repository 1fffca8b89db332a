#include "tools/text/utf8.h"

#include <algorithm>
#include <array>

namespace vel::command {
namespace {

struct Form {
    unsigned lead_mask, lead_bits;  // what the first byte looks like
    std::size_t length;
    char32_t smallest;  // below this a shorter form exists
};

constexpr std::array<Form, 4> kForms{{
    {0x80, 0x00, 1, 0},
    {0xE0, 0xC0, 2, 0x80},
    {0xF0, 0xE0, 3, 0x800},
    {0xF8, 0xF0, 4, 0x10000},
}};

constexpr Character kStrayByte{kNotUtf8, 1};

constexpr bool is_continuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

constexpr bool is_scalar(char32_t code) { return code <= 0x10FFFF && !(code >= 0xD800 && code <= 0xDFFF); }

constexpr bool within(char32_t code, char32_t first, char32_t last) { return code >= first && code <= last; }

}  // namespace

Character first_character(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    const auto form = std::find_if(kForms.begin(), kForms.end(),
                                   [lead](const Form& f) { return (lead & f.lead_mask) == f.lead_bits; });
    if (form == kForms.end() || text.size() < form->length) return kStrayByte;
    char32_t code = lead & ~form->lead_mask;
    if (form->length == 1) code = lead;
    for (const char byte : text.substr(1, form->length - 1)) {
        if (!is_continuation(byte)) return kStrayByte;
        code = code << 6 | (static_cast<unsigned char>(byte) & 0x3F);
    }
    if (code < form->smallest || !is_scalar(code)) return kStrayByte;
    return {code, form->length};
}

bool is_utf8(std::string_view text) {
    bool result = true;
    for_each_character(text, [&](char32_t code, std::string_view) { result = result && code != kNotUtf8; });
    return result;
}

std::string_view cut_to(std::string_view text, std::size_t size) {
    if (text.size() <= size) return text;
    std::size_t end = size;
    while (end > 0 && end > size - std::min<std::size_t>(size, 3) && is_continuation(text[end])) --end;
    return text.substr(0, end);
}

void append_utf8(std::string& text, char32_t code) {
    const auto form =
        std::find_if(kForms.rbegin(), kForms.rend(), [code](const Form& f) { return code >= f.smallest; });
    std::size_t shift = 6 * (form->length - 1);
    text += static_cast<char>(form->lead_bits | code >> shift);
    while (shift > 0) {
        shift -= 6;
        text += static_cast<char>(0x80 | (code >> shift & 0x3F));
    }
}

bool steers_a_terminal(char32_t code) {
    return code < 0x20 || within(code, 0x7F, 0x9F)                               // C0, DEL, C1
           || within(code, 0x200E, 0x200F) || within(code, 0x2028, 0x202E)       // marks, separators, overrides
           || within(code, 0x2066, 0x2069) || code == 0x061C || code == 0xFEFF;  // isolates, Arabic mark, BOM
}

}  // namespace vel::command
