// Kept: "_" stands for itself, both ways, and a blank is written "=20".
// Kept: an escape that is none yields 0xFF, one that is cut short stays (put_decoded_q).
// Kept: nothing of "B" is checked, a character outside the alphabet counts as 0xFF; a quantum that is cut
//       short yields what it can (put_quantum).
// Kept: a NUL among the bytes ends the word (put_decoded_text).
#include "codec/encoded_word_text.h"

#include <algorithm>
#include <array>

#include "codec/base64_encoder.h"

namespace vel {
namespace {

constexpr std::size_t kEscape = 3;  // characters: "=" and two digits

constexpr std::array<bool, 256> kEscaped = [] {
    std::array<bool, 256> escaped{};
    for (std::size_t byte = 0; byte < escaped.size(); ++byte) escaped[byte] = byte <= ' ' || byte >= 128;
    for (const char c : std::string_view("=?()<>@,:;.[]\\\"")) escaped[static_cast<uint8_t>(c)] = true;
    return escaped;
}();

std::string encoded_q(std::string_view plain) {
    std::string text;
    text.reserve(kEscape * plain.size());
    for (const uint8_t byte : bytes_of(plain)) {
        if (kEscaped[byte]) {
            text += {'=', basis_hex[byte >> 4], basis_hex[byte & 15]};
        } else {
            text += static_cast<char>(byte);
        }
    }
    return text;
}

std::string encoded_b(std::string_view plain) {
    const Bytes bytes = bytes_of(plain);
    std::string text((bytes.size() + 2) / 3 * 4, '\0');
    char* to = text.data();
    for (std::size_t at = 0; at < bytes.size(); at += 3, to += 4) {
        std::array<uint8_t, 3> quantum{};
        const std::size_t taken = std::min(quantum.size(), bytes.size() - at);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), taken, quantum.begin());
        out64(quantum[0], quantum[1], quantum[2], static_cast<int>(quantum.size() - taken), to);
    }
    return text;
}

void put_decoded_q(std::string_view text, Cursor& out) {
    for (std::size_t equals = text.find('='); equals != text.npos; equals = text.find('=')) {
        const bool cut_short = text.size() - equals < kEscape;
        if (cut_short) break;
        put_text(out, text.substr(0, equals));
        put_byte(out, byte_of_hex(static_cast<uint8_t>(text[equals + 1]), static_cast<uint8_t>(text[equals + 2])));
        text.remove_prefix(equals + kEscape);
    }
    put_text(out, text);
}

// Up to four characters, of which the first "=" is the end. A byte is there with the character that completes
// it: none with the first one.
void put_quantum(std::string_view text, Cursor& out) {
    text = text.substr(0, text.find('='));
    std::array<unsigned, 4> values{};
    for (std::size_t i = 0; i < text.size(); ++i) values[i] = kBase64Value[static_cast<uint8_t>(text[i])];
    if (text.size() > 1) put_byte(out, values[0] << 2 | (values[1] >> 4 & 3));
    if (text.size() > 2) put_byte(out, values[1] << 4 | (values[2] >> 2 & 15));
    if (text.size() > 3) put_byte(out, values[2] << 6 | values[3]);
}

void put_decoded_b(std::string_view text, Cursor& out) {
    for (; text.size() > 4; text.remove_prefix(4)) put_quantum(text.substr(0, 4), out);
    put_quantum(text, out);
}

}  // namespace

std::string encoded_text(std::string_view plain, WordMethod method) {
    return method == WordMethod::q ? encoded_q(plain) : encoded_b(plain);
}

void put_decoded_text(std::string_view text, WordMethod method, Cursor& out) {
    const Cursor start = out;
    (method == WordMethod::q ? put_decoded_q : put_decoded_b)(text, out);
    out = std::find(start, out, uint8_t{0});
}

}  // namespace vel
