// Values of the parameters that a record keeps as "name=value" texts.
#ifndef VEL_TOOLS_MESSAGE_PARAMETERS_H
#define VEL_TOOLS_MESSAGE_PARAMETERS_H

#include <optional>
#include <string_view>

#include "tools/text/readable.h"
#include "vel/types.h"

namespace vel::command {

// The value of a parameter, names compared without case: without blanks around it and its quotes. One in the
// extended notation of RFC 2231 (name*, or name*0, name*1, ...) goes before a plain one; its percent escapes are
// resolved and its charset converted. In a value that names no charset encoded words are read.
std::optional<Readable> parameter(const ms* chain, std::string_view name);

}  // namespace vel::command

#endif
