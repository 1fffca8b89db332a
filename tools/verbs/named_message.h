// The message that a notice is about.
#ifndef VEL_TOOLS_VERBS_NAMED_MESSAGE_H
#define VEL_TOOLS_VERBS_NAMED_MESSAGE_H

#include <string>

#include "tools/io/session.h"
#include "tools/queue/entries.h"

namespace vel::command {

struct NamedMessage {
    std::string base;  // its path without ".msg"
    OwnedEntry entry;  // null: the queue does not know it
};

// Finds a message by the identifier of its entry, or by the path of its file with or without ".msg". Throws Failure:
// no input when there is none, or no entry although one is needed.
NamedMessage find_message(const std::string& name, bool needs_entry, Session& session);

}  // namespace vel::command

#endif
