// The fields of a header block in the order in which they are shown.
#ifndef VEL_TOOLS_MESSAGE_HEADER_FIELDS_H
#define VEL_TOOLS_MESSAGE_HEADER_FIELDS_H

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "tools/message/header_block.h"

namespace vel::command {

using Json = nlohmann::ordered_json;

enum class Texts { readable, as_they_stand };

// For people: a line a text, an address or a date; nothing for what is absent.
std::string fields_text(const HeaderBlock& block, Texts texts);

// For programs: every field of the record, null where it is absent; then envelope and what was left out; then the
// addresses and texts as people read them.
Json fields_json(const HeaderBlock& block);

}  // namespace vel::command

#endif
