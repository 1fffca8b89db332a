// A message file as it may go into the queue.
#ifndef VEL_TOOLS_COMPOSE_OUTGOING_H
#define VEL_TOOLS_COMPOSE_OUTGOING_H

#include <string>

#include "tools/io/scratch.h"

namespace vel::command {

// A copy without the Bcc and Resent-Bcc fields of its header block (RFC 5322 section 3.6.3), in which every line
// ends in CR LF, the last one too. Throws Failure, bad_data, with the line: for what does not begin with a header
// field, for NUL, which no copy of lines keeps, and for CR within a header field, behind which readers see others.
PrivateFile outgoing_copy(const std::string& path, Scratch& scratch);

}  // namespace vel::command

#endif
