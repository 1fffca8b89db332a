// A parsed message for people.
#ifndef VEL_TOOLS_MESSAGE_DRAW_TREE_H
#define VEL_TOOLS_MESSAGE_DRAW_TREE_H

#include <string>

#include "tools/io/output.h"
#include "tools/message/message.h"

namespace vel::command {

// One line: the name, what kind of message, how many entities of what kind, how it was read.
std::string heading_of(const ParsedMessage& message);

// The heading, the tree of entities, a row each, and the uncovered ranges.
void draw_tree(const ParsedMessage& message, Output& output);

}  // namespace vel::command

#endif
