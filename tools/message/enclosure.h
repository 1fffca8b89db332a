// The messages that stand in one file, each in the one that encloses it.
#ifndef VEL_TOOLS_MESSAGE_ENCLOSURE_H
#define VEL_TOOLS_MESSAGE_ENCLOSURE_H

#include <vector>

#include "tools/message/message.h"

namespace vel::command {

// The entities of one message: the whole one, or one that is enclosed, without what that encloses itself.
struct Enclosure {
    int depth = 0;           // in messages
    std::vector<int> parts;  // in the order in which the tree is drawn; the first one has the message's header
};

// The outer ones first. Those that hold nothing are left out.
std::vector<Enclosure> enclosures_of(const ParsedMessage& message);

}  // namespace vel::command

#endif
