// Where the settings come from, and what is in the file.
#ifndef VEL_TOOLS_SETTINGS_SETTINGS_FILE_H
#define VEL_TOOLS_SETTINGS_SETTINGS_FILE_H

#include <string>

namespace vel::command {

struct SettingsFile {
    std::string path;
    bool by_environment = false;  // OSTRA_CONFIG_DIR names its directory
    bool missing = false;
    std::string trouble;  // why it holds no settings; empty when it does
    std::string text;
};

// The file that the library reads.
SettingsFile read_settings_file();

}  // namespace vel::command

#endif
