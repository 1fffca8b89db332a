// One attempt at a delivery: a command that is handed a message.
#ifndef VEL_TOOLS_QUEUE_ATTEMPT_H
#define VEL_TOOLS_QUEUE_ATTEMPT_H

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/queue/command_stream.h"
#include "tools/queue/stop_request.h"
#include "tools/queue/verdict.h"
#include "vel/platform/queue.h"

namespace vel::command {

struct DeliveryCommand {
    std::string program;                          // its path
    std::vector<std::string> arguments;           // the name that it is called by first
    std::optional<std::chrono::seconds> timeout;  // nothing: it may take its time
};

// What holds while the command runs.
struct Circumstances {
    StopRequest& stop;
    std::chrono::seconds between_extensions;
    std::function<bool()> extend;   // the lease; false when the claim is lost
    CommandStream::OnLine on_line;  // of what it writes
};

struct Outcome {
    Verdict verdict;
    std::string reason;
    std::string status = "4.0.0";  // RFC 3463, of what has failed or been deferred
};

// Runs the command: the message is its standard input, its descriptor 3 the envelope as JSON. VEL_ID, VEL_CHANNEL,
// VEL_SENDER and, where there is one alone, VEL_RECIPIENT are in its environment. It writes to pipes: if our standard
// error has gone, that does not end a delivery.
Outcome attempt(const MQEntry& entry, const DeliveryCommand& command, const Circumstances& circumstances);

}  // namespace vel::command

#endif
