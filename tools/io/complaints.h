// The library's complaints about messages in plain words.
#ifndef VEL_TOOLS_IO_COMPLAINTS_H
#define VEL_TOOLS_IO_COMPLAINTS_H

#include <string_view>
#include <vector>

#include "tools/io/journal.h"
#include "tools/io/trouble.h"

namespace vel::command {

// The library complains about the message, at the level of errors or about one of its fields.
bool is_complaint(const LogLine& line);

// The first line that complains; null when none does.
const LogLine* complaint_among(const std::vector<LogLine>& lines);

// What a complaint means, a half sentence that goes on behind a field's name: "has a quoted parameter that
// does not end".
std::string_view meaning_of(std::string_view complaint);

// The same for a field that the parser stumbles over later.
std::string_view meaning_of(const TroubledField& field);

}  // namespace vel::command

#endif
