#include "tools/text/safe_name.h"

#include <algorithm>
#include <array>

#include "tools/text/ascii.h"
#include "tools/text/utf8.h"

namespace vel::command {
namespace {

constexpr std::string_view kSlashes = "/\\";
constexpr std::string_view kForbidden = "<>:\"|?*";
constexpr std::string_view kDroppedAtEnds = ". ";
constexpr std::size_t kLongestExtension = 16;  // a longer one is no extension

// Names that mean a device on DOS and its heirs, with any extension.
constexpr std::array<std::string_view, 7> kDevices{"con", "prn", "aux", "nul", "conin$", "conout$", "clock$"};
constexpr std::array<std::string_view, 2> kNumberedDevices{"com", "lpt"};

bool is_forbidden(char32_t code) {
    if (code == kNotUtf8 || steers_a_terminal(code)) return true;
    return code < 0x80 && kForbidden.find(static_cast<char>(code)) != std::string_view::npos;
}

std::string without_forbidden_characters(std::string_view name) {
    std::string result;
    for_each_character(name, [&](char32_t code, std::string_view bytes) {
        if (is_forbidden(code)) {
            result += '_';
        } else {
            result += bytes;
        }
    });
    return result;
}

std::string_view without_ends(std::string_view name) {
    const std::size_t first = name.find_first_not_of(kDroppedAtEnds);
    if (first == std::string_view::npos) return {};
    return name.substr(first, name.find_last_not_of(kDroppedAtEnds) - first + 1);
}

bool is_device(std::string_view name) {
    const std::string stem = lower(trimmed(name.substr(0, name.find('.'))));
    if (std::find(kDevices.begin(), kDevices.end(), stem) != kDevices.end()) return true;
    return stem.size() == 4 && stem.back() >= '0' && stem.back() <= '9' &&
           std::find(kNumberedDevices.begin(), kNumberedDevices.end(), stem.substr(0, 3)) != kNumberedDevices.end();
}

// Where the extension with its dot begins; the name's length when it has none.
std::size_t start_of_extension(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 || name.size() - dot > kLongestExtension ? name.size() : dot;
}

std::string cut(std::string_view name) {
    if (name.size() <= kLongestName) return std::string(name);
    const std::string_view extension = name.substr(start_of_extension(name));
    const std::string_view stem = cut_to(name, kLongestName - extension.size());
    return std::string(without_ends(stem)).append(extension);
}

}  // namespace

std::string safe_name(std::string_view wanted) {
    const std::size_t slash = wanted.find_last_of(kSlashes);
    if (slash != std::string_view::npos) wanted.remove_prefix(slash + 1);
    const std::string clean = without_forbidden_characters(trimmed(wanted));
    std::string name(without_ends(clean));
    if (name.empty()) return name;
    if (name.front() == '-' || name.front() == '~') name.front() = '_';
    if (is_device(name)) name.insert(name.begin(), '_');
    return cut(name);
}

std::string numbered(std::string_view name, unsigned number) {
    const std::size_t extension = start_of_extension(name);
    return std::string(name.substr(0, extension))
        .append("-")
        .append(std::to_string(number))
        .append(name.substr(extension));
}

}  // namespace vel::command
