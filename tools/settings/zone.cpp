#include "tools/settings/zone.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>

#include "tools/io/caller_zone.h"
#include "tools/settings/zone_rule.h"
#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr const char* kLocalTime = "/etc/localtime";
constexpr std::string_view kMagic = "TZif";      // RFC 8536 section 3.1
constexpr std::streamsize kLargest = 64 * 1024;  // several times the largest zone file

std::string file_of(std::string_view name) {
    if (name.starts_with('/')) return std::string(name);
    const char* directory = std::getenv("TZDIR");
    return std::string(directory && *directory ? directory : "/usr/share/zoneinfo").append("/").append(name);
}

// A zone file; empty when it is none.
std::string read_zone(const std::string& path) {
    std::error_code failed;
    if (!std::filesystem::is_regular_file(path, failed)) return {};
    std::ifstream file(path, std::ios::binary);
    std::string content(static_cast<std::size_t>(kLargest), '\0');
    file.read(content.data(), kLargest);
    content.resize(static_cast<std::size_t>(file.gcount()));
    return content.starts_with(kMagic) ? content : std::string();
}

// The rule for all time to come stands between the last two line feeds (RFC 8536 section 3.3).
std::string rule_of(const std::string& zone) {
    if (!zone.ends_with('\n')) return {};
    const std::size_t start = zone.rfind('\n', zone.size() - 2);
    return start == zone.npos ? std::string() : zone.substr(start + 1, zone.size() - start - 2);
}

bool fits(const std::string& value) { return !value.empty() && value.size() <= kLongestZone; }

// Of a zone that is known by a name, or by its file only.
MachineZone setting_for(const std::string& name, const std::string& file) {
    if (fits(name) && is_zone(name) && !begins(name, kLeavesZoneAlone)) return {name, {}};
    const std::string what = name.empty() ? file : name;
    const std::string rule = rule_of(read_zone(file));
    if (fits(rule) && is_zone_rule(rule)) return {rule, "the time zone " + what + " is written as its rule, " + rule};
    return {std::string(kLeavesZoneAlone),
            "the time zone " + what + " does not fit the setting; TimeZone = " + std::string(kLeavesZoneAlone) +
                " leaves programs the zone that they are started with"};
}

// Of the path that /etc/localtime leads to; empty when it is no link.
std::string name_of_link() {
    constexpr std::string_view directory = "zoneinfo/";
    std::error_code failed;
    const std::string target = std::filesystem::read_symlink(kLocalTime, failed);
    const std::size_t at = target.find(directory);
    return failed || at == target.npos ? std::string() : target.substr(at + directory.size());
}

std::string name_in_file() {
    std::ifstream file("/etc/timezone");
    std::string name;
    file >> name;
    return name;
}

}  // namespace

bool is_zone(std::string_view text) {
    if (text.starts_with(':')) text.remove_prefix(1);
    if (text.empty()) return false;
    return is_zone_rule(text) || same(text, "UTC") || !read_zone(file_of(text)).empty();
}

MachineZone zone_of_machine() {
    std::string name = caller_zone();
    if (name.starts_with(':')) name.erase(0, 1);
    if (!name.empty() && is_zone(name)) return setting_for(name, file_of(name));
    MachineZone zone{"UTC0", "the machine does not tell its time zone; UTC is taken"};
    if (const std::string linked = name_of_link(); !linked.empty() && is_zone(linked)) {
        zone = setting_for(linked, kLocalTime);
    } else if (!read_zone(kLocalTime).empty()) {
        zone = setting_for({}, kLocalTime);
    } else if (const std::string written = name_in_file(); is_zone(written)) {
        zone = setting_for(written, file_of(written));
    }
    if (!name.empty()) zone.remark = "TZ=" + name + " is no time zone that is known here; " + zone.value + " is taken";
    return zone;
}

}  // namespace vel::command
