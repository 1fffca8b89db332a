#include "tools/queue/connection.h"

#include "vel/platform/queue.h"

namespace vel::command {

void connect_to_queue(Session& session) {
    session.journal.share();
    if (!MQInit(nullptr, "vel")) throw queue_failure(session, "no connection to the queue");
}

Failure queue_failure(Journal& journal, const std::string& what, Exit exit) {
    std::string text = what;
    for (const LogLine& line : journal.take()) {
        if (line.level == kErrorLevel) text.append("; ").append(line.text);
    }
    return {exit, text};
}

}  // namespace vel::command
