#include "codec/handle_io.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace vel {
namespace {

int64_t in_full_blocks(int64_t bytes) { return (bytes + kCountedBlock - 1) / kCountedBlock * kCountedBlock; }

std::size_t block_for(int fd, int64_t count) {
    const bool can_be_positioned = ::lseek(fd, 0, SEEK_CUR) != -1;
    const auto most = static_cast<int64_t>(can_be_positioned ? kLargeBlock : kCountedBlock);
    return static_cast<std::size_t>(std::min(in_full_blocks(count), most));
}

}  // namespace

CountedInput::CountedInput(int fd, int64_t count)
    : fd_(fd),
      count_(std::max<int64_t>(count, 0)),
      block_(block_for(fd, count_)),
      buffer_(std::make_unique_for_overwrite<uint8_t[]>(block_)) {}

Bytes CountedInput::next() {
    if (used_up()) return {};
    // The last block is read whole, so that the descriptor mostly stands where it belongs already.
    const auto block = static_cast<int64_t>(block_);
    const int64_t wanted = std::min(block - read_ % block, in_full_blocks(count_) - read_);
    const ssize_t got = read_again(fd_, buffer_.get(), static_cast<std::size_t>(wanted));
    if (got <= 0) return {};
    read_ += got;
    const int64_t usable = std::min<int64_t>(got, count_ - given_);
    given_ += usable;
    return {buffer_.get(), static_cast<std::size_t>(usable)};
}

void CountedInput::settle(int64_t consumed) {
    const int64_t due = in_full_blocks(consumed);
    if (read_ > due) ::lseek(fd_, due - read_, SEEK_CUR);
}

CollectedOutput::CollectedOutput(int fd, std::size_t room)
    : fd_(fd),
      size_(room + kCountedBlock),
      buffer_(std::make_unique_for_overwrite<uint8_t[]>(size_)),
      end_(buffer_.get()) {}

bool CollectedOutput::write_full_blocks() { return held() == 0 || write((held() - 1) / kCountedBlock * kCountedBlock); }

bool CollectedOutput::write_all() { return write(held()); }

// Writes from the start and moves what is left there.
bool CollectedOutput::write(int64_t length) {
    Cursor from = buffer_.get();
    for (const Cursor stop = from + length; from < stop && !failed_;) {
        const ssize_t put = ::write(fd_, from, static_cast<std::size_t>(stop - from));
        if (put == -1 && errno == EINTR) continue;
        failed_ = put <= 0;
        if (!failed_) from += put, written_ += put;
    }
    end_ = std::copy(from, end_, buffer_.get());
    return !failed_;
}

}  // namespace vel
