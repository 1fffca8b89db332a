// Objects for programs.
#ifndef VEL_TOOLS_TEXT_JSON_LINE_H
#define VEL_TOOLS_TEXT_JSON_LINE_H

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace vel::command {

using Json = nlohmann::ordered_json;

// One line of ASCII. Texts must be in the form of json_text.
std::string one_line(const Json& object);

}  // namespace vel::command

#endif
