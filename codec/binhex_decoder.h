// From BinHex characters, those behind the opening colon, to the bytes of its stream.
//
// The bytes are asked for and not handed out, since twelve characters may stand for a thousand of them.
#ifndef VEL_CODEC_BINHEX_DECODER_H
#define VEL_CODEC_BINHEX_DECODER_H

#include <functional>
#include <memory>

#include "codec/binhex_alphabet.h"
#include "codec/bytes.h"

namespace vel {

// Hands out the next block of characters; none when there are no more.
using NextBlock = std::function<Bytes()>;

constexpr int kBinhexDone = 0;
constexpr int kBinhexFailed = -1;   // the stream ends too early, or a CRC differs
constexpr int kBinhexRefused = -2;  // a character is outside the alphabet

}  // namespace vel

// The decoder's state.
struct SplitBHWorkArea {
    enum class End : uint8_t { none, colon, cut, refused };

    // Reads from the rest of a block on.
    explicit SplitBHWorkArea(vel::NextBlock next_block, vel::Bytes rest = {});

    vel::NextBlock next_block;
    vel::Bytes input;       // characters that were not looked at yet
    uint32_t group = 0;     // the bits of up to four characters
    uint8_t collected = 0;  // how many
    End end = End::none;

    std::unique_ptr<uint8_t[]> packed_buffer;
    vel::Bytes packed;  // bytes whose runs are not expanded yet

    std::unique_ptr<uint8_t[]> buffer;
    vel::Bytes output;                  // decoded bytes that nobody took yet
    uint8_t last = vel::kBinhexMarker;  // the byte that a run repeats; at first one that no name is as long as
    bool marked = false;                // a run's count is next
};

// Turns characters of the input into packed bytes. White space is skipped, a colon ends the stream and fills the
// last group up with zeros. Returns 0; -2 when a character is outside the alphabet.
int DecodeBinHexToBuffer(SplitBHWorkArea& work);

// Expands packed bytes, as many as the output has room for.
void RunLengthExpansion(SplitBHWorkArea& work);

// Sees to it that there is output. Returns 0; -1 when the stream is over; -2 when it ends in a character outside
// the alphabet.
int ReadDecodeExpand(SplitBHWorkArea& work);

namespace vel {

// Takes bytes off the output, at most as many, but for the end of the stream at least one.
Bytes next_bytes(SplitBHWorkArea& work, std::size_t most, int& result);

// Takes exactly as many. Returns as ReadDecodeExpand.
int take_bytes(SplitBHWorkArea& work, void* to, std::size_t count);

}  // namespace vel

#endif
