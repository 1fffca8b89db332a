// The access values that fileopen, filecreate and CreateFile are called with.
#ifndef VEL_FRAME_ACCESS_H
#define VEL_FRAME_ACCESS_H

namespace vel {

constexpr int kForReading = 1;
constexpr int kForWriting = 2;
constexpr int kBuffered = 1;
constexpr int kUnbuffered = 0;

}  // namespace vel

#endif
