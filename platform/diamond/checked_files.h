// The files that this process has found whole, so that a lookup need not read all of an unchanged table to be sure.
#ifndef VEL_PLATFORM_DIAMOND_CHECKED_FILES_H
#define VEL_PLATFORM_DIAMOND_CHECKED_FILES_H

#include <string>

#include "platform/whole_file.h"

namespace vel {

// Whether the file was remembered, and has not changed since. Any thread.
bool was_whole(const std::string& path, const FileStamp& stamp);
void remember_whole(const std::string& path, const FileStamp& stamp);

}  // namespace vel

#endif
