// Copies of messages, or of parts of them, in the private directory. All of them throw Failure; a copy of
// 2 GiB or more is refused.
#ifndef VEL_TOOLS_IO_PRIVATE_COPY_H
#define VEL_TOOLS_IO_PRIVATE_COPY_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/io/library_owned.h"
#include "tools/io/scratch.h"

namespace vel::command {

// What an open descriptor gives until its end.
PrivateFile copy_stream(int fd, Scratch& scratch);

// The file with every bare LF turned into CR LF.
PrivateFile copy_with_line_ends(const std::string& path, Scratch& scratch);

// The bytes of one range.
PrivateFile copy_range(Range range, const std::string& path, Scratch& scratch);

// The file without some ranges, which stand in order, and with a text added at its end.
PrivateFile copy_without(const std::vector<Range>& ranges, const std::string& path, std::string_view ending,
                         Scratch& scratch);

}  // namespace vel::command

#endif
