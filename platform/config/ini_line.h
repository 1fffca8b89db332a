// The grammar of a configuration file, line by line: what the reader and the writer agree on.
//
//   file     = [byte order mark] *line
//   line     = comment / section / setting / anything else, which means nothing
//   comment  = (";" / "#") *any
//   section  = "[" name "]" *any
//   setting  = name "=" (value / <"> value <">)
//
// Blanks around names and values are dropped; LF or CR LF ends a line. A "[" without "]" still ends
// the section before it, so that a slip of the pen does not hand its settings to another section.
#ifndef VEL_PLATFORM_CONFIG_INI_LINE_H
#define VEL_PLATFORM_CONFIG_INI_LINE_H

#include <optional>
#include <string_view>

namespace vel {

// One line; all of its texts are views into the scanned text.
struct IniLine {
    enum class Kind { other, section, setting };

    Kind kind;
    std::string_view whole;    // with its end, and the byte order mark where one stands before it
    std::string_view section;  // the section that the line opens or belongs to; empty: none
    std::string_view key;      // of a setting
    std::string_view value;    // of a setting, its quotes still on
};

// Walks over a text line by line.
class IniScanner {
  public:
    explicit IniScanner(std::string_view text) : rest_(text) {}

    // Nothing at the end of the text.
    std::optional<IniLine> next();

  private:
    std::string_view take_line();

    std::string_view rest_;
    std::string_view section_;
    bool at_start_ = true;
};

// A value without its one pair of quotes.
std::string_view unquoted(std::string_view value);

}  // namespace vel

#endif
