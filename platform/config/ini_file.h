// The settings of one configuration file, as they stood when it was read.
#ifndef VEL_PLATFORM_CONFIG_INI_FILE_H
#define VEL_PLATFORM_CONFIG_INI_FILE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vel {

class IniFile {
  public:
    explicit IniFile(std::string text);
    IniFile(const IniFile&) = delete;  // the table points into the text
    IniFile& operator=(const IniFile&) = delete;

    // The value of the first setting of that name. Sections ignore case, keys do not.
    std::optional<std::string_view> find(std::string_view section, std::string_view key) const;

    const std::string& text() const { return text_; }

  private:
    struct Name {
        std::string_view section;
        std::string_view key;
        bool operator==(const Name& other) const;
    };
    struct Hash {
        std::size_t operator()(const Name& name) const;
    };

    const std::string text_;
    std::unordered_map<Name, std::string_view, Hash> settings_;
};

}  // namespace vel

#endif
