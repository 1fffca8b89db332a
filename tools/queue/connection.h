// The command's way to the gateway's queue.
#ifndef VEL_TOOLS_QUEUE_CONNECTION_H
#define VEL_TOOLS_QUEUE_CONNECTION_H

#include <string>

#include "tools/io/exit_code.h"
#include "tools/io/session.h"

namespace vel::command {

// Connects the process to the queue; what becomes of messages stands in the log from now on. Throws Failure.
void connect_to_queue(Session& session);

// What a call of the queue that failed means, with the reason that it has logged.
Failure queue_failure(Journal& journal, const std::string& what, Exit exit = Exit::unavailable);
inline Failure queue_failure(Session& session, const std::string& what, Exit exit = Exit::unavailable) {
    return queue_failure(session.journal, what, exit);
}

}  // namespace vel::command

#endif
