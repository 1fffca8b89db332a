// Quoted-printable (RFC 2045 section 6.7) in lines of 73 characters and the "=" of a soft break.
#ifndef VEL_CODEC_QP_ENCODER_H
#define VEL_CODEC_QP_ENCODER_H

#include "codec/bytes.h"

namespace vel {

// Wherein the encoders differ.
struct QpPolicy {
    uint8_t first_plain;   // lower bytes are escaped
    bool keeps_lines;      // CR LF and tabs stay as they are
    bool guards_from;      // "From " at the beginning of a line is written "=46rom "
    bool may_end_in_from;  // the input may end where "From " is being looked for
};

inline constexpr QpPolicy kQpText{' ', true, true, false};
inline constexpr QpPolicy kQpTextFile{' ', true, true, true};
inline constexpr QpPolicy kQpBinary{' ' + 1, false, false, true};

template <QpPolicy kPolicy>
class QpEncoder {
  public:
    // Three characters a byte, a soft break for every 24 of them, and what was held back.
    static constexpr std::size_t room(std::size_t input) { return 3 * input + input / 8 + 32; }

    // Takes all bytes and returns their number.
    std::size_t more(Bytes in, Cursor& out);

    static constexpr bool over() { return false; }

    // Ends the text. Tells whether it may end here; ended_early: the input ended before its count.
    bool finish(bool ended_early, Cursor& out);

  private:
    bool is_inside_line() const { return column_ > 0 && previous_ != '\n' && !carriage_return_ && matched_ == 0; }
    const uint8_t* inside_line(const uint8_t* at, const uint8_t* end, Cursor& out);
    void step(uint8_t byte, Cursor& out);
    void plain_or_escaped(uint8_t byte, Cursor& out);
    bool goes_on_from(uint8_t byte, Cursor& out);
    void release_from(bool guarded, Cursor& out);
    void late_carriage_return(Cursor& out);
    void line_feed(Cursor& out);
    void break_full_line(Cursor& out);

    std::size_t column_ = 0;        // characters on the current line
    std::size_t matched_ = 0;       // letters of "From" that are held back
    int previous_ = 255;            // the byte before; LF behind a soft break too
    bool carriage_return_ = false;  // a CR is held back
};

extern template class QpEncoder<kQpText>;
extern template class QpEncoder<kQpTextFile>;
extern template class QpEncoder<kQpBinary>;

}  // namespace vel

#endif
