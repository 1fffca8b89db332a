// Finds where BinHex text begins: the first colon behind the banner.
#ifndef VEL_CODEC_BINHEX_START_H
#define VEL_CODEC_BINHEX_START_H

#include "codec/binhex_alphabet.h"
#include "codec/bytes.h"

namespace vel {

class BinhexStart {
  public:
    // Takes the next bytes off a block, up to and including the colon when it is there. Returns whether it is.
    bool find(Bytes& block);

  private:
    void match_banner(Bytes& block);

    std::size_t matched_ = 0;  // characters of the banner
};

}  // namespace vel

#endif
