#include "codec/limited_input.h"

#include <algorithm>

#include "codec/handle_io.h"

namespace vel {

LimitedInput::LimitedInput(int fd, int64_t most)
    : fd_(fd),
      left_(std::max<int64_t>(most, 0)),
      block_(static_cast<std::size_t>(std::min<int64_t>(left_, kLargeBlock))),
      buffer_(std::make_unique_for_overwrite<uint8_t[]>(block_)) {}

Bytes LimitedInput::next() {
    const auto wanted = static_cast<std::size_t>(std::min(left_, static_cast<int64_t>(block_)));
    const ssize_t got = read_again(fd_, buffer_.get(), wanted);
    if (got <= 0) return {};
    left_ -= got;
    return {buffer_.get(), static_cast<std::size_t>(got)};
}

}  // namespace vel
