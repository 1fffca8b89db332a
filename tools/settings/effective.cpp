#include "tools/settings/effective.h"

#include <algorithm>
#include <cstring>

#include "tools/io/caller_zone.h"
#include "tools/settings/line_findings.h"
#include "tools/settings/zone.h"
#include "tools/text/ascii.h"
#include "vel/platform/config.h"

namespace vel::command {
namespace {

constexpr const char* kIniName = "ostra.ini";
constexpr std::size_t kMostShown = 200;  // bytes of a value in a finding

// One default depends on another setting.
const char* fallback_of(const SettingRow& row) {
    if (&row != &row_of("Options", "ScanForJIS")) return row.fallback;
    return same(value_of(row_of("Gateway", "LocalCharSet")), "ISO-2022-JP") ? "YES" : row.fallback;
}

std::string read(const SettingRow& row, std::size_t size) {
    std::string value(size, '\0');
    const int length = GetPrivateProfileString(row.section, row.key, fallback_of(row), value.data(),
                                               static_cast<int>(value.size()), kIniName);
    value.resize(static_cast<std::size_t>(length));
    return value;
}

std::string name_of(const SettingRow& row) { return std::string("[").append(row.section).append("] ").append(row.key); }

std::string quoted(std::string_view value) {
    return std::string(" \"").append(value.substr(0, kMostShown)).append(value.size() > kMostShown ? "...\" " : "\" ");
}

void look_at_value(const Effective& setting, std::vector<ConfigFinding>& findings) {
    const std::string name = name_of(*setting.row);
    if (setting.stands > setting.value.size()) {
        findings.push_back({setting.line, std::string(name)
                                              .append(" is cut to ")
                                              .append(std::to_string(setting.value.size()))
                                              .append(" bytes of ")
                                              .append(std::to_string(setting.stands))});
    }
    const std::string wrong = setting.row->kind(setting.value);
    if (wrong.empty()) return;
    const std::string value = setting.value.empty() ? " " : quoted(setting.value);
    findings.push_back({setting.line, std::string(name).append(value).append(wrong)});
}

void look_at_zone(const Effective& setting, std::vector<ConfigFinding>& findings) {
    if (!begins(setting.value, kLeavesZoneAlone)) return;
    const std::string& zone = caller_zone();
    const std::string what = zone.empty() ? "the machine's: TZ is not set here" : "that of the environment: TZ=" + zone;
    findings.push_back({setting.line, std::string("the time zone is ").append(what), true});
}

void look_at_file(const SettingsFile& file, std::vector<ConfigFinding>& findings) {
    if (!file.trouble.empty()) {
        const bool remark = file.missing && !file.by_environment;
        findings.push_back({0, "the file " + file.trouble + ": all settings have their defaults", remark});
    }
    if (!file.path.starts_with('/')) {
        findings.push_back(
            {0, "OSTRA_CONFIG_DIR is not absolute: each program looks below where it was started", true});
    }
}

}  // namespace

// What is not cut are the settings of the log, which takes an empty one for none.
std::string value_of(const SettingRow& row) {
    constexpr std::size_t plenty = 4 * 1024 * 1024 + 1;
    if (row.size > 0) return read(row, row.size);
    const std::string value = read(row, plenty);
    return value.empty() ? row.fallback : value;
}

Configuration read_configuration() {
    Configuration result;
    result.file = read_settings_file();
    LineFindings lines = look_at_lines(result.file.text);
    result.findings = std::move(lines.kept);
    result.findings_left_out = lines.left_out;
    for (std::size_t i = 0; i < lines.lines.size(); ++i) {
        const SettingRow& row = all_settings()[i];
        const uint64_t line = lines.lines[i];
        const std::size_t room = std::max(result.file.text.size(), std::strlen(row.fallback)) + 1;
        const std::size_t stands = read(row, room).size();
        result.settings.push_back({&row, value_of(row), line, stands});
        look_at_value(result.settings.back(), result.findings);
    }
    look_at_zone(result.settings.front(), result.findings);
    look_at_file(result.file, result.findings);
    // Line 0 goes behind all others.
    std::stable_sort(result.findings.begin(), result.findings.end(),
                     [](const ConfigFinding& a, const ConfigFinding& b) { return a.line - 1 < b.line - 1; });
    return result;
}

}  // namespace vel::command
