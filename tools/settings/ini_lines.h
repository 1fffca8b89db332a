// The lines of a configuration file, by the grammar of vel/platform/config.h: which setting stands on which line. What
// is in force tells the library's own reader.
#ifndef VEL_TOOLS_SETTINGS_INI_LINES_H
#define VEL_TOOLS_SETTINGS_INI_LINES_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace vel::command {

// Its texts are views into the file's.
struct IniLine {
    enum class Kind { nothing, section, setting, stray };  // nothing: blank, or a comment; stray: none of the others

    Kind kind;
    uint64_t number;           // from 1
    std::string_view content;  // without the blanks around it
    std::string_view section;  // that it opens or belongs to; empty: none
    std::string_view key;      // of a setting
};

class IniLines {
  public:
    explicit IniLines(std::string_view text);

    std::optional<IniLine> next();

  private:
    std::string_view rest_;
    std::string_view section_;
    uint64_t number_ = 0;
};

}  // namespace vel::command

#endif
