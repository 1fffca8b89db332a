#include "tools/io/private_copy.h"

#include <unistd.h>

#include <algorithm>
#include <limits>

#include "tools/io/blocks.h"
#include "tools/io/scratch_file.h"

namespace vel::command {
namespace {

constexpr uint32_t kFileEnd = std::numeric_limits<uint32_t>::max();

// A new private file, no larger than a message may be.
class Copy {
  public:
    explicit Copy(Scratch& scratch) : file_(scratch) {}

    void write(std::string_view bytes) {
        file_.write(bytes);
        if (is_too_large(file_.size())) throw_too_large();
    }

    // The end of the file ends the range too.
    void write_range(int from, Range range) {
        if (::lseek(from, range.start, SEEK_SET) == -1) throw Failure::of_system_call(Exit::io_error, "");
        while (range.start < range.end) {
            const ssize_t got = read_block(from, block_.get(), std::min<std::size_t>(kBlock, range.end - range.start));
            if (got < 0) throw Failure::of_system_call(Exit::io_error, "");
            if (got == 0) return;
            write({block_.get(), static_cast<std::size_t>(got)});
            range.start += static_cast<uint32_t>(got);
        }
    }

    PrivateFile finish() { return file_.finish(); }

  private:
    ScratchFile file_;
    std::unique_ptr<char[]> block_ = std::make_unique<char[]>(kBlock);
};

}  // namespace

PrivateFile copy_stream(int fd, Scratch& scratch) {
    Copy copy(scratch);
    for_each_block(fd, [&](std::string_view block) {
        copy.write(block);
        return true;
    });
    return copy.finish();
}

PrivateFile copy_with_line_ends(const std::string& path, Scratch& scratch) {
    const Descriptor from = open_for_reading(path);
    Copy copy(scratch);
    bool after_cr = false;
    for_each_block(from.get(), [&](std::string_view block) {
        while (!block.empty()) {
            const std::size_t feed = block.find('\n');
            const std::string_view line = block.substr(0, feed);
            copy.write(line);
            if (!line.empty()) after_cr = line.back() == '\r';
            if (feed == std::string_view::npos) return true;
            copy.write(after_cr ? "\n" : "\r\n");
            after_cr = false;
            block.remove_prefix(feed + 1);
        }
        return true;
    });
    return copy.finish();
}

PrivateFile copy_range(Range range, const std::string& path, Scratch& scratch) {
    const Descriptor from = open_for_reading(path);
    Copy copy(scratch);
    copy.write_range(from.get(), range);
    return copy.finish();
}

PrivateFile copy_without(const std::vector<Range>& ranges, const std::string& path, std::string_view ending,
                         Scratch& scratch) {
    const Descriptor from = open_for_reading(path);
    Copy copy(scratch);
    uint32_t position = 0;
    for (const Range& range : ranges) {
        if (range.start > position) copy.write_range(from.get(), {position, range.start});
        position = std::max(position, range.end);
    }
    copy.write_range(from.get(), {position, kFileEnd});
    copy.write(ending);
    return copy.finish();
}

}  // namespace vel::command
