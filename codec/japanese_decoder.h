// JIS to Shift-JIS, with a repair for text whose escape bytes were lost on the way.
#ifndef VEL_CODEC_JAPANESE_DECODER_H
#define VEL_CODEC_JAPANESE_DECODER_H

#include <string>

#include "codec/japanese_bytes.h"

namespace vel {

class JisDecoder {
  public:
    // repairs: "$B" or "$@" begins double-byte text too when a closer is found behind it on the line.
    explicit JisDecoder(bool repairs = false) : repairs_(repairs) {}

    // A line end may become longer by one byte; what was held back comes in addition.
    static constexpr std::size_t room(std::size_t input) { return 2 * input + kMostHeld + 4; }

    void more(Bytes in, Cursor& out);
    void finish(Cursor& out);

    // A damaged closer is sought so far and no farther, so that a line without end takes no memory. It is
    // many times what RFC 5322 lets a line have.
    static constexpr std::size_t kMostHeld = 32 * 1024;

  private:
    // What was read last.
    enum class Phase {
        text,             // nothing that matters, or the first byte of a pair
        carriage_return,  // CR, whose line end is written
        escape,           // ESC
        escape_dollar,    // ESC "$"
        escape_paren,     // ESC "("
        behind_escape,    // ESC and a byte that begins no sequence
        dollar,           // "$", which may begin a repair
        damaged,          // text behind a damaged opener, held back
        damaged_escape,   // the same and ESC
        damaged_paren,    // the same and ESC "("
        unconverted,      // a repair that failed; up to the line's end
    };

    const uint8_t* plain(const uint8_t* at, const uint8_t* end, Cursor& out) const;
    void step(uint8_t byte, Cursor& out);
    void text(uint8_t byte, Cursor& out);
    void escape(uint8_t byte);
    void dollar(uint8_t byte, Cursor& out);
    void damaged(uint8_t byte, Cursor& out);
    void damaged_escape(uint8_t byte, Cursor& out);
    void damaged_paren(uint8_t byte, Cursor& out);
    void go_to(Phase phase, bool double_byte) { phase_ = phase, double_ = double_byte; }
    void repair(std::size_t behind, Cursor& out);
    void give_up(Phase then, Cursor& out);
    void put_half(Cursor& out);
    bool release(Cursor& out);
    void end_line(uint8_t byte, Cursor& out);

    bool repairs_;
    bool double_ = false;
    Phase phase_ = Phase::text;
    int half_ = -1;     // the first byte of a pair
    std::string held_;  // "$B" or "$@" and what stands behind it
};

}  // namespace vel

#endif
