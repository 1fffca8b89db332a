// Stored messages of the queue carry their envelope in lines before and among the header lines.
#ifndef VEL_MIME_ENVELOPE_LINE_H
#define VEL_MIME_ENVELOPE_LINE_H

#include <string_view>

namespace vel {

// A sender or recipient line.
inline bool is_envelope_line(std::string_view line) { return line.starts_with("#F") || line.starts_with("#R"); }

}  // namespace vel

#endif
