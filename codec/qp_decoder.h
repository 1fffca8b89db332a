// Quoted-printable (RFC 2045 section 6.7), read without complaint.
#ifndef VEL_CODEC_QP_DECODER_H
#define VEL_CODEC_QP_DECODER_H

#include "codec/bytes.h"
#include "codec/words.h"

namespace vel {

class QpDecoder {
  public:
    // A line end may be two bytes for one; runs are copied by sixteen bytes.
    static constexpr std::size_t room(std::size_t input) { return 2 * input + 2 + kWide; }

    // Takes all bytes and returns their number.
    std::size_t more(Bytes in, Cursor& out);

    static constexpr bool over() { return false; }

    // Tells whether the text may end here; ended_early: the input ended before its count.
    bool finish(bool ended_early, Cursor&) const {
        return phase_ == Phase::equals || (phase_ == Phase::text && !ended_early);
    }

    // Behind the first character of an escape.
    bool in_escape() const { return phase_ == Phase::second_digit || phase_ == Phase::soft_break; }

  private:
    enum class Phase : uint8_t { text, equals, second_digit, soft_break };

    const uint8_t* text(const uint8_t* at, const uint8_t* end, Cursor& out);
    const uint8_t* special(const uint8_t* at, const uint8_t* end);
    void escape(uint8_t character, Cursor& out);

    Phase phase_ = Phase::text;
    bool line_end_ = false;  // not written yet
    uint8_t first_digit_ = 0;
};

}  // namespace vel

#endif
