#include "codec/byte_buffer.h"

#include <cstring>

#include "codec/uu_alphabet.h"
#include "vel/frame.h"

int getonechar(int handle, uint8_t* buffer, int size, int* index) {
    if (*index == 0 || *index == size) {
        uint32_t got = 0;
        if (!ReadFile(handle, buffer, static_cast<uint32_t>(size), &got, nullptr) || got == 0) return -1;
        *index = size - static_cast<int>(got);
        if (*index > 0) std::memmove(buffer + *index, buffer, got);
    }
    return buffer[(*index)++];
}

int writeonechar(int handle, int byte, uint8_t* buffer, int size, int* count) {
    if (*count == size && flushallchar(handle, buffer, count) != 0) return -1;
    buffer[(*count)++] = static_cast<uint8_t>(byte);
    return 0;
}

int flushallchar(int handle, uint8_t* buffer, int* count) {
    if (*count == 0) return 0;
    const auto length = static_cast<uint32_t>(*count);
    uint32_t put = 0;
    if (!WriteFile(handle, buffer, length, &put, nullptr) || put != length) return -1;
    *count = 0;
    return 0;
}

int outenc(int a, int b, int c, int handle) {
    const int values[] = {a >> 2, a << 4 | (b >> 4 & 15), b << 2 | (c >> 6 & 3), c};
    for (const int value : values) {
        if (outch(vel::kUuAlphabet[static_cast<std::size_t>(value & 63)], handle) != 1) return -1;
    }
    return 0;
}
