// Codecs on descriptors.
//
// A codec's buffers count as 256 bytes each. That shows in where the input stands afterwards, a
// multiple of 256 bytes behind its first offset, and in where a write that fails is noticed. Blocks of
// that size would cost more than the decoding, so those used here are larger, and Stretch sees to it
// that results and offsets come out as if they were not. An input that cannot be positioned, such as a
// pipe, is read by 256 bytes.
#ifndef VEL_CODEC_HANDLE_IO_H
#define VEL_CODEC_HANDLE_IO_H

#include <memory>
#include <utility>

#include "codec/bytes.h"
#include "frame/line_file.h"

namespace vel {

constexpr int64_t kCountedBlock = 256;          // what buffers count as
constexpr std::size_t kLargeBlock = 32 * 1024;  // what is read at once; its output stays below malloc's mmap size

// A counted stretch of a descriptor's bytes.
class CountedInput {
  public:
    CountedInput(int fd, int64_t count);

    std::size_t largest_block() const { return block_; }
    bool used_up() const { return given_ == count_; }

    // The next bytes; none when the input ends or fails.
    Bytes next();

    // Leaves the descriptor where it stands when blocks of 256 bytes are read for so many bytes.
    void settle(int64_t consumed);

  private:
    int fd_;
    int64_t count_;
    int64_t given_ = 0;
    int64_t read_ = 0;
    std::size_t block_;
    std::unique_ptr<uint8_t[]> buffer_;
};

// Output that is collected and written in large pieces.
class CollectedOutput {
  public:
    CollectedOutput(int fd, std::size_t room);

    Cursor& cursor() { return end_; }

    // The number of bytes that were put so far.
    int64_t produced() const { return written_ + held(); }

    // Write: all but the last 256 bytes or fewer; the same, when there is no room for so many more;
    // everything. False when a write falls short, then and ever after.
    bool write_full_blocks();
    bool make_room(std::size_t more) { return room_left() >= more || write_full_blocks(); }
    bool write_all();

    // Behind a write that fell short: the byte whose turn finds a full block that cannot be written.
    int64_t stuck_at() const { return (written_ / kCountedBlock + 1) * kCountedBlock; }

  private:
    int64_t held() const { return end_ - buffer_.get(); }
    std::size_t room_left() const { return size_ - static_cast<std::size_t>(held()); }
    bool write(int64_t length);

    int fd_;
    int64_t written_ = 0;
    bool failed_ = false;
    std::size_t size_;
    std::unique_ptr<uint8_t[]> buffer_;
    Cursor end_;
};

// A codec's pass over a counted stretch of a descriptor.
template <class Codec>
class Stretch {
  public:
    Stretch(Codec& codec, int in, int64_t count, int out)
        : codec_(codec), input_(in, count), output_(out, Codec::room(input_.largest_block())), start_{codec, 0, 0} {}

    // Returns false when the codec refuses, when the input ends too early for it, or when a write falls
    // short; the codec then stands before the byte at which that happened.
    bool run() {
        const bool done = pass();
        input_.settle(consumed_);
        return done;
    }

  private:
    // Where a block began.
    struct Start {
        Codec codec;
        int64_t consumed;
        int64_t produced;
    };

    bool pass() {
        bool ended_early = false;
        while (!ended_early && !codec_.over() && !input_.used_up()) {
            if (!output_.write_full_blocks()) return stuck();
            ended_early = !take(input_.next());
        }
        const bool accepted = codec_.finish(ended_early, output_.cursor());
        const bool written = accepted ? output_.write_all() : output_.write_full_blocks();
        return written ? accepted : stuck();
    }

    bool take(Bytes block) {
        start_ = {codec_, consumed_, output_.produced()};
        block_ = block;
        consumed_ += static_cast<int64_t>(codec_.more(block, output_.cursor()));
        return !block.empty();
    }

    // Goes through the last block again, byte by byte, up to the one whose output found no place; there
    // is none when only the last piece could not be written.
    bool stuck() {
        const auto room = std::make_unique_for_overwrite<uint8_t[]>(Codec::room(1));
        Start here = start_;
        for (; !block_.empty() && !here.codec.over(); block_ = block_.subspan(1)) {
            Start next = here;
            Cursor end = room.get();
            next.codec.more(block_.first(1), end);
            next.consumed += 1;
            next.produced += end - room.get();
            if (next.produced > output_.stuck_at()) {
                codec_ = here.codec;
                consumed_ = next.consumed;
                break;
            }
            here = next;
        }
        return false;
    }

    Codec& codec_;
    CountedInput input_;
    CollectedOutput output_;
    Start start_;
    Bytes block_;
    int64_t consumed_ = 0;
};

// Encodes everything that is left of a descriptor. write(text) tells whether the text went out.
template <class Encoder, class Write>
bool encode_rest(int in, Encoder encoder, Write write) {
    const auto input = std::make_unique_for_overwrite<uint8_t[]>(kLargeBlock);
    const auto output = std::make_unique_for_overwrite<uint8_t[]>(Encoder::room(kLargeBlock));
    Cursor end = output.get();
    const auto flush = [&] {
        const auto length = static_cast<std::size_t>(std::exchange(end, output.get()) - output.get());
        return length == 0 || write(std::string_view(reinterpret_cast<const char*>(output.get()), length));
    };
    for (;;) {
        const ssize_t got = read_again(in, input.get(), kLargeBlock);
        if (got < 0) return false;
        if (got == 0) break;
        if (!flush()) return false;
        encoder.more({input.get(), static_cast<std::size_t>(got)}, end);
    }
    encoder.finish(end);
    return flush();
}

}  // namespace vel

#endif
