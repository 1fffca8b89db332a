// The CRC of BinHex: polynomial 0x1021, first value 0, nothing reflected, nothing added at the end.
#ifndef VEL_CODEC_CRC16_H
#define VEL_CODEC_CRC16_H

#include <cstddef>
#include <cstdint>

#include "codec/bytes.h"

// Shifts bytes into a running CRC, the remainder of all bytes so far. Behind the last byte it needs two
// bytes of zero to become the CRC that is stored.
uint16_t DoCRC(uint16_t crc, const uint8_t* bytes, std::size_t count);

namespace vel {

// One CRC on its way.
class Crc16 {
  public:
    void more(Bytes bytes) { running_ = DoCRC(running_, bytes.data(), bytes.size()); }

    // What is stored.
    uint16_t finished() const {
        constexpr uint8_t kZeros[2] = {};
        return DoCRC(running_, kZeros, sizeof kZeros);
    }

  private:
    uint16_t running_ = 0;
};

}  // namespace vel

#endif
