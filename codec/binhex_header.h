// The header of a BinHex stream: name, type, creator, flags and the lengths of the forks.
#ifndef VEL_CODEC_BINHEX_HEADER_H
#define VEL_CODEC_BINHEX_HEADER_H

#include <array>

#include "codec/bytes.h"

namespace vel {

constexpr std::size_t kBinhexNameMax = 63;     // what the Macintosh allows
constexpr std::size_t kBinhexFixedBytes = 19;  // version to resource fork length

}  // namespace vel

// Numbers hold the bytes of the stream, see to_MAC_LONG and to_MAC_WORD.
struct tagBinhex_Header {
    uint8_t nameLength;
    char name[64];
    uint8_t version; /* 0 */
    char type[4];
    char creator[4];
    uint16_t flags;
    uint32_t dataLength;
    uint32_t resourceLength;
    uint16_t crc;
};

// The CRC of a header without its own.
uint16_t CalcHeaderCRC(tagBinhex_Header header);

namespace vel {

// A header as it stands in the stream, without its CRC.
class BinhexHeaderBytes {
  public:
    explicit BinhexHeaderBytes(const tagBinhex_Header& header);
    Bytes bytes() const { return {bytes_.data(), length_}; }

  private:
    std::array<uint8_t, 1 + kBinhexNameMax + kBinhexFixedBytes> bytes_;
    std::size_t length_;
};

// Fills in what stands behind the name.
void take_fixed_fields(tagBinhex_Header& header, const std::array<uint8_t, kBinhexFixedBytes>& bytes);

}  // namespace vel

#endif
