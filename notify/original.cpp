// Kept: the lines are those of the line reader, each up to its first NUL; LF alone ends no header block.
#include "notify/original.h"

#include <cstring>

#include "build/envelope_line.h"
#include "build/texts.h"
#include "frame/access.h"
#include "frame/file_pool.h"
#include "frame/line_file.h"
#include "frame/open_handle.h"

namespace vel {
namespace {

constexpr Kind kHeaderBlock{"text", "RFC822-Headers", "7bit"};

// A line of more than 1024 bytes comes in pieces, of which the first one tells what it is.
Trouble copy_header_block(LineFile lines, NewFile& file, EnvelopeLines which) {
    bool begins = true, is_dropped = false;
    for (std::string_view line;; begins = line.ends_with('\n')) {
        const LineResult result = lines.next(line);
        if (result != LineResult::line) return result == LineResult::end ? Trouble::none : Trouble::unreadable;
        if (begins && line.starts_with(kLineEnd)) return Trouble::none;
        if (begins) is_dropped = which == EnvelopeLines::dropped && is_envelope_line(line);
        if (!is_dropped && !file.put(line.substr(0, line.find('\0')))) return Trouble::unwritten;
    }
}

}  // namespace

std::string message_file(const char* path) { return std::string(or_empty(path)).append(".msg"); }

const char* last_part(const char* path) {
    const char* slash = std::strrchr(or_empty(path), '/');
    return slash ? slash + 1 : or_empty(path);
}

Trouble add_header_block(Parts& parts, const std::string& message, EnvelopeLines which) {
    const OpenHandle in(fileopen(message.c_str(), kForReading, kBuffered));
    VEL_FILE* source = in ? pooled_file(in.get()) : nullptr;
    if (!source) return Trouble::unopened;
    return parts.add_text(kHeaderBlock,
                          [&](NewFile& file) { return copy_header_block(LineFile(source), file, which); });
}

}  // namespace vel
