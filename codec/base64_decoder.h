// Base64 (RFC 2045 section 6.8), read strictly: any character outside the alphabet is refused.
#ifndef VEL_CODEC_BASE64_DECODER_H
#define VEL_CODEC_BASE64_DECODER_H

#include "codec/bytes.h"

namespace vel {

class Base64Decoder {
  public:
    static constexpr std::size_t room(std::size_t input) { return input - input / 4 + 4; }

    // Returns how many bytes it took: fewer than there are when the text is over.
    std::size_t more(Bytes in, Cursor& out);

    // A character has ended the text, or was refused.
    bool over() const { return state_ != State::open; }

    // Tells whether the text may end here; ended_early: the input ended before its count.
    bool finish(bool ended_early, Cursor&) const {
        return state_ == State::ended || (state_ == State::open && !ended_early);
    }

  private:
    enum class State : uint8_t { open, ended, refused };

    static const uint8_t* whole_quanta(const uint8_t* at, const uint8_t* end, Cursor& out);
    void one(uint8_t character, Cursor& out);

    State state_ = State::open;
    uint8_t place_ = 0;  // in the quantum, 0 to 3
    uint32_t bits_ = 0;  // of the quantum's characters so far, in the low bits
};

}  // namespace vel

#endif
