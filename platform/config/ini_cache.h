// Parsed configuration files, kept until the files change.
#ifndef VEL_PLATFORM_CONFIG_INI_CACHE_H
#define VEL_PLATFORM_CONFIG_INI_CACHE_H

#include <cstddef>
#include <memory>

#include "platform/config/ini_file.h"

namespace vel {

// More than any configuration needs; a bigger file counts as one that cannot be read.
constexpr std::size_t kIniMax = 4 * 1024 * 1024;

// The file's settings as they stand at this moment (see HeldFile for what shows 10 ms later); null when it cannot be read. Costs one
// fstat while the file stays as it is, now and then a stat, and a stat where it is missing. Any thread.
std::shared_ptr<const IniFile> current_ini(const char* path);

}  // namespace vel

#endif
