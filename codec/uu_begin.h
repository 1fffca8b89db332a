// Begin lines of uuencoded files: "begin", a mode of digits, a name.
#ifndef VEL_CODEC_UU_BEGIN_H
#define VEL_CODEC_UU_BEGIN_H

#include <optional>
#include <string_view>

namespace vel {

constexpr std::size_t kUuNameMax = 255;  // the callers' buffers hold 256 bytes

// The name on a begin line, empty when there is none; nothing when the line is no begin line.
std::optional<std::string_view> uu_begin_name(std::string_view line);

}  // namespace vel

#endif
