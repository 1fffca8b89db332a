// A message as a person reads it.
#ifndef VEL_TOOLS_MESSAGE_LETTER_H
#define VEL_TOOLS_MESSAGE_LETTER_H

#include "tools/io/exit_code.h"
#include "tools/io/session.h"
#include "tools/message/message.h"

namespace vel::command {

// Writes the chief header lines, the texts in UTF-8, enclosed messages likewise below their own header lines, and
// a table of the parts that are not shown. What cannot be shown is complained about and listed; the result tells
// how bad that is. Throws Failure.
//   html_as_text  show HTML where there is no plain text
Exit write_letter(const ParsedMessage& message, bool html_as_text, Session& session);

}  // namespace vel::command

#endif
