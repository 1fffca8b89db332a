// Copying a file line by line, each line as it is or edited on its way.
//
// A line of more than 1024 bytes comes in pieces. Only its first piece begins a line.
// Kept: a NUL ends its piece, and a last line without LF that ends where a block of the file does is dropped.
#ifndef VEL_BUILD_COPY_LINES_H
#define VEL_BUILD_COPY_LINES_H

#include <string>
#include <string_view>

#include "frame/file_pool.h"
#include "frame/line_file.h"

namespace vel {

enum class Copied { whole, unreadable, unwritten };

// Copies from one pooled handle's position to another's. When the input cannot be read to its end, what came before is
// written.
//   edit  edit(line, begins) gives what is written for a line, or for a piece of one when begins is false;
//         edit.is_over() tells that from now on each line is written as it is
template <class Edit>
Copied copy_lines(int in, int out, Edit edit) {
    constexpr std::size_t kPiece = 32 * 1024;  // written at once
    VEL_FILE* source = pooled_file(in);
    VEL_FILE* target = pooled_file(out);
    if (!source || !target) return source ? Copied::unwritten : Copied::unreadable;
    LineFile lines(source);
    std::string held;
    held.reserve(kPiece + kBlock + kLineMax);
    bool begins = true;
    for (std::string_view line;;) {
        if (edit.is_over()) held.append(lines.next_lines());
        const LineResult result = lines.next(line);
        const bool goes_on = result == LineResult::line;
        if (goes_on) held.append(edit(line.substr(0, line.find('\0')), begins));
        begins = line.ends_with('\n');
        if (goes_on && held.size() < kPiece) continue;
        if (LineFile(target).put(held) != 1) return Copied::unwritten;
        held.clear();
        if (!goes_on) return result == LineResult::end ? Copied::whole : Copied::unreadable;
    }
}

struct Unedited {
    bool is_over() const { return true; }
    std::string_view operator()(std::string_view line, bool) const { return line; }
};

inline Copied copy_lines(int in, int out) { return copy_lines(in, out, Unedited()); }

}  // namespace vel

#endif
