#include "tools/text/json_line.h"

#include <nlohmann/json.hpp>

namespace vel::command {

std::string one_line(const Json& object) { return object.dump(-1, ' ', true); }

}  // namespace vel::command
