// What a header line begins with.
#ifndef VEL_TOOLS_COMPOSE_FIELD_NAME_H
#define VEL_TOOLS_COMPOSE_FIELD_NAME_H

#include <algorithm>
#include <string_view>

#include "tools/text/ascii.h"

namespace vel::command {

// The name of the field that a line begins, without the blanks that may stand before its colon (RFC 5322 sections 2.2
// and 4.5); empty when it begins none.
constexpr std::string_view field_name(std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == line.npos || line.starts_with(' ') || line.starts_with('\t')) return {};
    const std::string_view name = trimmed(line.substr(0, colon));
    const bool is_name = std::all_of(name.begin(), name.end(), [](char c) { return c > ' ' && c <= '~'; });
    return is_name ? name : std::string_view();
}

}  // namespace vel::command

#endif
