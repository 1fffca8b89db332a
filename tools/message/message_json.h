// A parsed message for programs.
#ifndef VEL_TOOLS_MESSAGE_MESSAGE_JSON_H
#define VEL_TOOLS_MESSAGE_MESSAGE_JSON_H

#include <optional>
#include <string>

#include "tools/io/output.h"
#include "tools/message/message.h"
#include "tools/text/json_line.h"
#include "tools/text/readable.h"

namespace vel::command {

// [{"level": 1, "text": "..."}, ...]
Json messages_json(const std::vector<LogLine>& lines);

// {"text": "...", "converted": true}, or null.
Json readable_json(const std::optional<Readable>& text);

// What every verb says first about a message: file, mime, normalized, fallback, removed, messages.
Json message_facts(const ParsedMessage& message);

// [{"start": 10, "end": 20}, ...]
Json ranges_json(const std::vector<Range>& ranges);

// Writes the whole message as one object on one line, in the order of the help text.
void write_json(const ParsedMessage& message, Output& output);

}  // namespace vel::command

#endif
