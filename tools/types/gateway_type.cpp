#include "tools/types/gateway_type.h"

#include <algorithm>

#include "tools/io/blocks.h"

namespace vel::command {

bool is_ascii_file(const std::string& path) {
    bool ascii = true;
    const Descriptor file = open_for_reading(path);
    for_each_block(file.get(), [&](std::string_view block) {
        return ascii = std::all_of(block.begin(), block.end(), [](char c) { return c >= 0; });
    });
    return ascii;
}

std::string looked_up_extension(const std::string& path) {
    constexpr std::size_t kLongest = sizeof MagicRecord::extension - 1;
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos) return {};
    const std::string extension = path.substr(dot + 1, kLongest);
    return extension.substr(0, extension.find(' '));
}

std::optional<MagicRecord> type_by_extension(const std::string& path) {
    const std::string extension = looked_up_extension(path);
    MagicRecord record{};
    if (extension.empty() || GetMagicFromExtension(extension.c_str(), &record) != 0) return std::nullopt;
    return record;
}

}  // namespace vel::command
