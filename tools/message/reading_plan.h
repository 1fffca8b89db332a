// Which parts of a message a person reads.
#ifndef VEL_TOOLS_MESSAGE_READING_PLAN_H
#define VEL_TOOLS_MESSAGE_READING_PLAN_H

#include <vector>

#include "tools/message/message.h"

namespace vel::command {

enum class Reads {
    nothing,  // a container
    text,     // a text body
    html,     // one where a text is expected
    listed,   // named among the other parts
};

// What is done with each part. Texts are those of type text, attachments excepted and what is written for programs
// only (RFC 2046 section 4.1.3). Of a multipart/alternative the first form with plain text is read, where there is
// none the last one with HTML; the others are listed.
std::vector<Reads> reading_plan(const ParsedMessage& message);

// A header block with the fields of a message begins here: the message itself, and one that is enclosed.
bool begins_message(const ParsedMessage& message, int index);

}  // namespace vel::command

#endif
