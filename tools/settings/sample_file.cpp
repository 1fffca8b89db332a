#include "tools/settings/sample_file.h"

#include <algorithm>

#include "tools/settings/catalogue.h"

namespace vel::command {
namespace {

constexpr std::size_t kWidth = 100;

constexpr const char* kHead =
    "; Settings of libvel, its local libraries and the vel command.\n"
    ";\n"
    "; Programs look for this file, ostra.ini, in the directory that $OSTRA_CONFIG_DIR names, else in\n"
    "; /etc/ostra. Every setting may be left out; what stands behind a comment sign is its default.\n"
    "; Section names ignore case, keys do not. An edit takes effect at the next read: at once, except\n"
    "; for what start-up keeps (marked so). \"vel config\" shows what is in force and what is wrong.\n";

// Comment lines of a text, broken between words.
std::string comment(std::string_view text) {
    std::string result;
    std::size_t column = kWidth;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(text.size(), word.size() + 1));
        if (column + 1 + word.size() > kWidth) {
            result += result.empty() ? ";" : "\n;";
            column = 1;
        }
        result.append(" ").append(word);
        column += 1 + word.size();
    }
    return result.append("\n");
}

std::string setting(const SettingRow& row, const std::vector<Given>& given) {
    const auto found = std::find_if(given.begin(), given.end(),
                                    [&](const Given& one) { return one.section == row.section && one.key == row.key; });
    const bool is_given = found != given.end();
    const std::string value = is_given ? found->value : row.fallback;
    return std::string(is_given ? "" : ";").append(row.key).append(value.empty() ? " =" : " = ").append(value);
}

}  // namespace

std::string sample_file(const std::vector<Given>& given) {
    std::string text = kHead;
    std::string_view section;
    for (const SettingRow& row : all_settings()) {
        const bool first = section != row.section;
        section = row.section;
        if (first) text.append("\n[").append(section).append("]\n");
        if (!row.help.empty()) text.append(first ? "" : "\n").append(comment(row.help));
        text.append(setting(row, given)).append("\n");
    }
    return text;
}

}  // namespace vel::command
