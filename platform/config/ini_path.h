// Where a configuration file lies.
#ifndef VEL_PLATFORM_CONFIG_INI_PATH_H
#define VEL_PLATFORM_CONFIG_INI_PATH_H

#include <climits>
#include <cstddef>
#include <string_view>

namespace vel {

// The file that both local libraries take their settings from.
constexpr const char* kIniName = "ostra.ini";

// A path on the stack, since one is made for every setting that is read.
class IniPath {
  public:
    // A name with a slash is a path; any other lies in $OSTRA_CONFIG_DIR, else in /etc/ostra.
    explicit IniPath(std::string_view name);

    // Empty, which opens no file, when the path is longer than any file's.
    const char* c_str() const { return path_; }

  private:
    void append(std::string_view part);

    std::size_t length_ = 0;
    char path_[PATH_MAX];
};

}  // namespace vel

#endif
