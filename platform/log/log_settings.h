// What section [Log] of "ostra.ini" says.
#ifndef VEL_PLATFORM_LOG_LOG_SETTINGS_H
#define VEL_PLATFORM_LOG_LOG_SETTINGS_H

#include <memory>
#include <string_view>

#include "platform/config/ini_file.h"

namespace vel {

// The settings as they stand at this moment.
class LogSettings {
  public:
    LogSettings();

    std::string_view target() const { return text("Target", "stderr"); }

    // Whether lines of this level are written. A setting that names no number means all of them: a
    // slip of the pen must not hide errors.
    bool wants(int level) const;

  private:
    std::string_view text(std::string_view key, std::string_view fallback) const;

    std::shared_ptr<const IniFile> ini_;
};

}  // namespace vel

#endif
