// Uuencoded data lines of 45 bytes, and the end line.
#ifndef VEL_CODEC_UU_ENCODER_H
#define VEL_CODEC_UU_ENCODER_H

#include <array>

#include "codec/bytes.h"

namespace vel {

class UuEncoder {
  public:
    static constexpr std::size_t kLineBytes = 45;

    static constexpr std::size_t room(std::size_t input) {
        return (input / kLineBytes + 2) * kLineCharacters + sizeof "`\r\nend\r\n\r\n";
    }

    void more(Bytes in, Cursor& out);

    // Writes the last line, the line of no bytes, the end line and an empty line.
    void finish(Cursor& out);

  private:
    static constexpr std::size_t kLineCharacters = 1 + kLineBytes / 3 * 4 + 2;

    // The last line's bytes. A shorter one is padded with what is left of the line before it; at the
    // start that is zero, so that nothing else of our memory goes out.
    std::array<uint8_t, kLineBytes> line_{};
    std::size_t count_ = 0;  // of the line that is not complete
};

}  // namespace vel

#endif
