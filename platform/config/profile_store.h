// Rewriting a file so that every reader, and a crash, sees the old content or the new.
#ifndef VEL_PLATFORM_CONFIG_PROFILE_STORE_H
#define VEL_PLATFORM_CONFIG_PROFILE_STORE_H

#include <functional>
#include <string>
#include <string_view>

namespace vel {

// Replaces a file's text, empty for a file that is missing, by what edit makes of it; leaves the
// file alone when that is the same. Processes that write the same file wait for one another, on a
// lock file beside it (".lock", which stays). The file keeps its mode and, where the process may
// give it away, its owner; a symbolic link stays one. False when anything fails: then the old file
// is untouched, unless only syncing its directory failed.
bool rewrite_file(const char* path, const std::function<std::string(std::string_view)>& edit);

}  // namespace vel

#endif
