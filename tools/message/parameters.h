// Values of the parameters that a record keeps as "name=value" texts.
#ifndef VEL_TOOLS_MESSAGE_PARAMETERS_H
#define VEL_TOOLS_MESSAGE_PARAMETERS_H

#include <optional>
#include <string>
#include <string_view>

#include "vel/types.h"

namespace vel::command {

// The value of a parameter, names compared without case: without blanks around it and its quotes. A value
// in the extended notation of RFC 2231 (name*, or name*0, name*1, ...) goes before a plain one; its percent
// escapes are resolved, its character set is not converted.
std::optional<std::string> parameter(const ms* chain, std::string_view name);

}  // namespace vel::command

#endif
