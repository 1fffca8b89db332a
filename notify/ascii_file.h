// Whether a file may go as it is.
#ifndef VEL_NOTIFY_ASCII_FILE_H
#define VEL_NOTIFY_ASCII_FILE_H

#include <optional>

namespace vel {

// Whether no byte of a file is above 127, as far as it can be read; nothing when it cannot be opened. Logs which.
std::optional<bool> tell_whether_ascii(const char* path);

}  // namespace vel

#endif
