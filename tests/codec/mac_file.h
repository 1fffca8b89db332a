// A Macintosh file in both of its formats, each made in a slow and obvious way.
#ifndef VEL_TESTS_CODEC_MAC_FILE_H
#define VEL_TESTS_CODEC_MAC_FILE_H

#include <string>
#include <string_view>

#include "codec/binhex_alphabet.h"

namespace vel::test {

using namespace std::string_literals;

inline std::string big(std::size_t value, int bytes) {
    std::string text;
    while (bytes-- > 0) text += static_cast<char>(value >> 8 * bytes);
    return text;
}

// Bit by bit, as the rules have it.
inline uint16_t slow_crc(std::string_view bytes) {
    unsigned crc = 0;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned>(static_cast<uint8_t>(byte)) << 8;
        for (int bit = 0; bit < 8; ++bit) crc = (crc << 1 ^ (crc & 0x8000 ? 0x1021 : 0)) & 0xFFFF;
    }
    return static_cast<uint16_t>(crc);
}

inline std::string with_crc(const std::string& bytes) { return bytes + big(slow_crc(bytes), 2); }

inline std::string slow_runs(std::string_view bytes) {
    std::string packed;
    for (std::size_t at = 0, end = 0; at < bytes.size(); at = end) {
        const char byte = bytes[at];
        for (end = at; end < bytes.size() && bytes[end] == byte && end - at < 255;) ++end;
        if (byte == '\x90') {
            packed += "\x90\0"s;
            end = at + 1;
        } else {
            packed += end - at < 3 ? std::string(end - at, byte) : byte + "\x90"s + static_cast<char>(end - at);
        }
    }
    return packed;
}

// Everything behind the banner's line.
inline std::string slow_text(std::string packed) {
    packed.append((3 - packed.size() % 3) % 3, '\xFF');
    std::string characters = ":";
    for (std::size_t bit = 0; bit < packed.size() * 8; bit += 6) {
        unsigned value = 0;
        for (std::size_t i = bit; i < bit + 6; ++i) value = value << 1 | (packed[i / 8] >> (7 - i % 8) & 1);
        characters += kBinhexAlphabet[value];
    }
    for (std::size_t at = 64; at <= characters.size(); at += 66) characters.insert(at, "\r\n");
    return characters + ":\r\n\r\n";
}

inline const std::string kBanner = "(This file must be converted with BinHex 4.0)\r\n";

struct MacFile {
    std::string name = "a name";
    std::string type = "TEXT", creator = "ttxt";
    unsigned flags = 0;
    std::string data = "", resource = "";

    std::string stream() const {
        const std::string header = big(name.size(), 1) + name + '\0' + type + creator + big(flags, 2);
        return with_crc(header + big(data.size(), 4) + big(resource.size(), 4)) + with_crc(data) + with_crc(resource);
    }
    std::string hqx() const { return kBanner + slow_text(slow_runs(stream())); }

    std::string apple_single() const {
        std::size_t offset = 74;
        std::string head = "\0\x05\x16\0\0\x02\0\0"s + std::string(16, '\0') + big(4, 2), entries;
        const auto add = [&](uint32_t id, const std::string& entry) {
            head += big(id, 4) + big(offset, 4) + big(entry.size(), 4);
            offset += entry.size();
            entries += entry;
        };
        add(1, data);
        add(2, resource);
        add(3, name);
        add(9, type + creator + big(flags, 2) + std::string(22, '\0'));
        return head + entries;
    }
};

}  // namespace vel::test

#endif
