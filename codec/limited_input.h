// Reading a stretch of a descriptor where nobody counts what was read, from a file or a pipe.
#ifndef VEL_CODEC_LIMITED_INPUT_H
#define VEL_CODEC_LIMITED_INPUT_H

#include <memory>

#include "codec/bytes.h"

namespace vel {

class LimitedInput {
  public:
    // Reads `most` bytes and none behind them.
    LimitedInput(int fd, int64_t most);

    // The next bytes; none when the stretch or the input ends, or reading fails.
    Bytes next();

  private:
    int fd_;
    int64_t left_;
    std::size_t block_;
    std::unique_ptr<uint8_t[]> buffer_;
};

}  // namespace vel

#endif
