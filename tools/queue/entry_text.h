// Entries of the queue for people.
#ifndef VEL_TOOLS_QUEUE_ENTRY_TEXT_H
#define VEL_TOOLS_QUEUE_ENTRY_TEXT_H

#include <cstdint>
#include <string>

#include "vel/platform/queue.h"

namespace vel::command {

// The columns of a list, whose widths do not depend on what is in it.
std::string list_heading();

// A line for each recipient, seen at a time in microseconds.
std::string list_lines(const MQEntry& entry, int64_t now);

// All there is to know of an entry.
std::string entry_text(const MQEntry& entry, int64_t now);

}  // namespace vel::command

#endif
