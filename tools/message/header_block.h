// One header block as the library's header parser reads it, and what it has left out.
#ifndef VEL_TOOLS_MESSAGE_HEADER_BLOCK_H
#define VEL_TOOLS_MESSAGE_HEADER_BLOCK_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/io/journal.h"
#include "vel/rfc822.h"

namespace vel::command {

struct HeaderFreed {
    void operator()(addr822* header) const { Free822Header(header); }
};

struct HeaderLine {
    uint32_t start;  // its offset in the file
    std::string text;
};

// So many of a kind are kept, the others only counted: a file that is no message has nothing else.
constexpr std::size_t kMostLeftOut = 1000;

// What the record does not hold.
struct LeftOut {
    std::vector<HeaderLine> kept;
    uint64_t count = 0;

    void add(HeaderLine line) {
        if (kept.size() < kMostLeftOut) kept.push_back(std::move(line));
        ++count;
    }
};

struct HeaderBlock {
    std::unique_ptr<addr822, HeaderFreed> fields;
    int lines = 0;                      // the empty one included
    int status_line = 0;                // 0: none
    uint32_t end = 0;                   // the offset behind the last line that was read
    std::vector<LogLine> said;          // by the library
    std::vector<std::string> envelope;  // the queue's lines, "#F" and "#R"
    LeftOut no_fields;                  // lines
    LeftOut cut_off;                    // what stands behind a line's first 1024 bytes, unless it looks like a field
    LeftOut no_addresses;  // fields of addresses that hold something else: "name: " and the first such stretch
    std::optional<HeaderLine> unreadable_date;  // the library has put the current time in its place
};

// Reads the block at the beginning of a file. Throws Failure.
HeaderBlock read_header_block(const std::string& path, Journal& journal);

// A line of the queue's envelope, which stands among the header lines.
bool is_envelope_line(std::string_view line);

}  // namespace vel::command

#endif
