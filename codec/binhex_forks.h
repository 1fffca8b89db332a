// From BinHex characters to a file's two forks.
#ifndef VEL_CODEC_BINHEX_FORKS_H
#define VEL_CODEC_BINHEX_FORKS_H

#include "codec/binhex_decoder.h"
#include "codec/binhex_header.h"

namespace vel {

// Takes the next bytes of a fork. Returns false when that fails.
using ForkSink = std::function<bool(Bytes)>;

}  // namespace vel

// Reads a stored CRC. Returns 0 when it is the computed one; else -1, or -2 as ReadDecodeExpand.
int TestBHFileCRC(SplitBHWorkArea& work, uint16_t computed);

// Decodes a stream up to its last CRC; what is behind that is not looked at.
//   header  receives the header, once its CRC holds
// Returns 0; -1 when the stream ends too early, when its name or a fork is too long, when a CRC differs and when a
// sink fails; -2 for a character outside the alphabet.
int SplitBinHexForks(SplitBHWorkArea& work, tagBinhex_Header& header, const vel::ForkSink& data,
                     const vel::ForkSink& resource);

#endif
