// JIS to Shift-JIS on the lines of an open file.
#ifndef VEL_CODEC_JAPANESE_LINES_H
#define VEL_CODEC_JAPANESE_LINES_H

#include <cstdint>

#include "vel/frame.h"

namespace vel {

constexpr int64_t kAllLines = INT64_MAX;

// Converts lines up to the end, or until so many bytes are produced. False when a read or write fails.
bool convert_jis_lines(VEL_FILE& in, int64_t count, int out, bool repairs);

// The same for all of a handle of the descriptor calls.
bool convert_jis(int in, int out, bool repairs);

}  // namespace vel

#endif
