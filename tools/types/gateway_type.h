// What decides as what a file is attached to a message of the gateway's own.
#ifndef VEL_TOOLS_TYPES_GATEWAY_TYPE_H
#define VEL_TOOLS_TYPES_GATEWAY_TYPE_H

#include <optional>
#include <string>

#include "vel/magic.h"

namespace vel::command {

// Such a file goes as text/basic, whatever its name. Throws Failure.
bool is_ascii_file(const std::string& path);

// What the table of types is asked for: what stands behind the last dot, up to a blank, at most 9 bytes;
// empty when there is none.
std::string looked_up_extension(const std::string& path);

// Nothing when the table does not know the extension.
std::optional<MagicRecord> type_by_extension(const std::string& path);

}  // namespace vel::command

#endif
