// The line and byte operations on one open file, shared by the descriptor and the pointer calls.
#ifndef VEL_FRAME_LINE_FILE_H
#define VEL_FRAME_LINE_FILE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "frame/owned.h"
#include "vel/frame.h"

// Allocates a record without a file, or null.
VEL_FILE* NewVEL_FILE();

// Frees a record, without flushing, then closes its descriptor; nothing for a null record.
void DelVEL_FILE(VEL_FILE** file);

namespace vel {

constexpr int kBlock = 4096;            // bytes moved by one read or buffered write
constexpr std::size_t kLineMax = 1024;  // bytes handed out as one line

enum class LineResult { error = -1, end = 0, line = 1 };

// A view of a record; results are those of the exported calls.
class LineFile {
  public:
    explicit LineFile(VEL_FILE* file) : f_(*file) {}

    // Hands out the next line, in the record's own buffer, NUL-terminated behind its end.
    LineResult next(std::string_view& line);

    // Hands out the whole lines that stand in the buffer, as one text and uncopied; nothing when there is none, or a
    // NUL among them. What is left comes with next.
    std::string_view next_lines();

    // Passes lines up to one that is wanted. Those that stand whole in the buffer are passed uncopied;
    // wanted(line) may be asked twice about a line.
    template <class Wanted>
    LineResult next_where(const Wanted& wanted, std::string_view& line);

    // Passes lines up to one that begins with a prefix.
    LineResult next_with(std::string_view prefix, std::string_view& line);

    int read_line(char** line);
    int put(std::string_view text);
    int in();
    void step_back();
    int out(int character);
    int set_position(int32_t position);

    // As set_position. Behind take_descriptor a position in the block that was read last costs no system
    // call: the bytes behind it are kept.
    int return_to(int32_t position);

    // From now on nobody else looks at the descriptor's offset, so that return_to need not move it. Changes
    // nothing for a file that cannot be positioned.
    void take_descriptor();

    int position() const { return f_.pos; }

    // Writes what a buffered file holds back; false when the write falls short.
    bool flush();

    // Forgets what is in the buffer: what was read is read again, what was not written never will be.
    void drop_buffer();

  private:
    bool needs_block() const { return !f_.cur || f_.mode != 0; }
    bool can_read() const;
    bool read_behind(int32_t kept, const char* message);
    bool fill(const char* message) { return read_behind(0, message); }
    bool complete_block(const char* message);
    std::string_view line_in_block() const;
    void pass(std::size_t length) {
        f_.cur += length;
        f_.pos += static_cast<int32_t>(length);
    }
    bool is_used_up() const { return f_.cur == f_.buf + f_.cnt; }
    bool at_end() const { return is_used_up() && f_.cnt < kBlock; }
    bool write_blocks(const void* blocks, std::size_t length, const char* message);
    bool would_overflow(std::size_t more);
    bool start_buffer();
    void empty_buffer();
    bool take_real_offset();

    VEL_FILE& f_;
};

// The next line, when all of it stands in the block; else empty.
inline std::string_view LineFile::line_in_block() const {
    if (needs_block()) return {};
    const std::size_t there = static_cast<std::size_t>(f_.buf + f_.cnt - f_.cur);
    const void* feed = std::memchr(f_.cur, '\n', std::min(there, kLineMax));
    const char* begin = reinterpret_cast<const char*>(f_.cur);
    if (feed) return {begin, static_cast<const char*>(feed) + 1};
    return {begin, there < kLineMax ? 0 : kLineMax};
}

template <class Wanted>
LineResult LineFile::next_where(const Wanted& wanted, std::string_view& line) {
    LineResult result{};
    do {
        for (auto there = line_in_block(); !there.empty() && !wanted(there); there = line_in_block())
            pass(there.size());
        result = next(line);
    } while (result == LineResult::line && !wanted(line));
    return result;
}

// A file opened by the pointer calls that is closed in the end.
struct LineFileClosed {
    void operator()(VEL_FILE* file) const { FileClose(file); }
};
using OpenFile = std::unique_ptr<VEL_FILE, LineFileClosed>;

// Repeat what a signal interrupted; write_all also repeats what was cut short.
ssize_t read_again(int fd, void* buffer, std::size_t length);
bool write_all(int fd, const void* data, std::size_t length);

}  // namespace vel

#endif
