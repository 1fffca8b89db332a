// Base64 in lines of 72 characters (RFC 2045 section 6.8).
#ifndef VEL_CODEC_BASE64_ENCODER_H
#define VEL_CODEC_BASE64_ENCODER_H

#include <array>

#include "codec/bytes.h"

// Writes three bytes as one quantum: four characters, of which the last `pad` (0, 1 or 2) are "=".
void out64(int a, int b, int c, int pad, char* out);

namespace vel {

class Base64Encoder {
  public:
    static constexpr std::size_t kLineBytes = 54;  // 18 quanta, 72 characters

    static constexpr std::size_t room(std::size_t input) { return (input / 3 + 2) * 4 + (input / kLineBytes + 3) * 2; }

    void more(Bytes in, Cursor& out);

    // Pads the last quantum and ends the text with a line end, an empty line if need be.
    void finish(Cursor& out);

  private:
    static constexpr int kLineQuanta = kLineBytes / 3;

    void quantum(const uint8_t* three, Cursor& out);
    void end_full_line(Cursor& out);

    std::array<uint8_t, 3> held_{};  // a quantum that is not complete yet
    std::size_t held_count_ = 0;
    int quanta_ = 0;  // on the current line
};

}  // namespace vel

#endif
