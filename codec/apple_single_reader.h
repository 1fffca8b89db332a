// Reading AppleSingle files.
#ifndef VEL_CODEC_APPLE_SINGLE_READER_H
#define VEL_CODEC_APPLE_SINGLE_READER_H

#include <cstddef>
#include <cstdint>

#include "codec/binhex_header.h"

namespace vel {

// Where an entry stands; no bytes for an entry that is missing.
struct AppleStretch {
    uint32_t offset = 0;
    uint32_t length = 0;
};

// What BinHex needs of an AppleSingle file.
struct AppleParameters {
    AppleStretch data;
    AppleStretch resource;
    char name[kBinhexNameMax + 1] = "";  // cut there
    uint8_t name_length = 0;
    char type[4] = {};
    char creator[4] = {};
};

// Moves to an offset and reads exactly as many bytes; false when that is not possible.
bool read_at(int handle, uint32_t offset, void* to, std::size_t count);

}  // namespace vel

// Reads the parameters of an AppleSingle file. Returns 0; -1 when the file cannot be read, when its descriptors do
// not lie in its first 8192 bytes, and when an entry passes its end.
int GetBinhexParameterFromAS(int handle, vel::AppleParameters& parameters);

#endif
