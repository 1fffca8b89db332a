// BinHex 4.0 text (RFC 1741): bytes, their runs shortened, as lines of 64 characters.
#ifndef VEL_CODEC_BINHEX_ENCODER_H
#define VEL_CODEC_BINHEX_ENCODER_H

#include <array>

#include "codec/bytes.h"

namespace vel {

// Bytes on their way into characters. 48 bytes make 64 characters, but the opening ":" takes a place: each
// block of 48 fills the open line with 63 characters and begins the next.
struct BinhexWork {
    static constexpr std::size_t kBlock = 48;

    uint8_t last = 0;    // the byte of the pending run
    unsigned count = 0;  // its length so far; with 0 there is none
    std::size_t held = 0;
    std::array<uint8_t, kBlock> block;  // what no character stands for yet
};

}  // namespace vel

// Adds one byte to the characters.
void OutHqx7(vel::BinhexWork& work, unsigned byte, vel::Cursor& out);

// Adds one run: the byte, the marker, the count.
void OutRep(vel::BinhexWork& work, unsigned byte, unsigned count, vel::Cursor& out);

// Adds bytes, with their runs shortened.
void DoRLEandHqx7(vel::BinhexWork& work, vel::Bytes bytes, vel::Cursor& out);

// Adds the pending run and completes the last group of three bytes.
void FlushRemain(vel::BinhexWork& work, vel::Cursor& out);

namespace vel {

class BinhexEncoder {
  public:
    // A marker takes two bytes, nothing takes more; a pending run and the pad are five at most.
    static constexpr std::size_t room(std::size_t input) {
        constexpr std::size_t kLine = 66;
        return ((2 * input + 5) / BinhexWork::kBlock + 2) * kLine + kFrame;
    }

    // Writes the banner and the opening colon; then come the bytes.
    static void start(Cursor& out);
    void more(Bytes in, Cursor& out) { DoRLEandHqx7(work_, in, out); }
    void finish(Cursor& out);

  private:
    static constexpr std::size_t kFrame = 64;  // the banner, or what is behind the last character

    BinhexWork work_;
};

}  // namespace vel

#endif
