// Shift-JIS to JIS.
#ifndef VEL_CODEC_JAPANESE_ENCODER_H
#define VEL_CODEC_JAPANESE_ENCODER_H

#include "codec/japanese_bytes.h"

namespace vel {

class JisEncoder {
  public:
    // mark: what stands for a byte that is no character; an empty one leaves such bytes alone.
    explicit JisEncoder(std::string_view mark = {}) : mark_(mark) {}

    // A byte becomes an escape sequence and a pair at most, or an escape sequence and the mark.
    static constexpr std::size_t room(std::size_t input, std::size_t mark = 0) { return (input + 2) * (mark + 5); }

    void more(Bytes in, Cursor& out);
    void finish(Cursor& out);

  private:
    const uint8_t* ascii(const uint8_t* at, const uint8_t* end, Cursor& out);
    const uint8_t* whole_pairs(const uint8_t* at, const uint8_t* end, Cursor& out);
    bool held_and(uint8_t next, Cursor& out);
    void put_double(DoubleByte sjis, Cursor& out);
    void open(Cursor& out);
    void close(Cursor& out);

    std::string_view mark_;
    uint8_t held_ = 0;      // a byte above 127 that waits for the next one; 0: none
    bool open_ = false;     // in double-byte text
    bool started_ = false;  // the first byte was looked at
};

}  // namespace vel

#endif
