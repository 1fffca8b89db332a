// Hands what is due in the queue to a command, message by message.
#ifndef VEL_TOOLS_QUEUE_DELIVERY_RUN_H
#define VEL_TOOLS_QUEUE_DELIVERY_RUN_H

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "tools/io/session.h"
#include "tools/queue/attempt.h"
#include "tools/queue/retry_plan.h"
#include "tools/report/fate.h"

namespace vel::command {

struct RunOptions {
    std::vector<std::string> channels;
    bool once = false;                              // until nothing is due
    bool batch = false;                             // an entry's due recipients together
    std::optional<Fate> success = Fate::delivered;  // what the command's success is reported as; nothing: not at all
    unsigned jobs = 1;                              // commands at once
    std::chrono::seconds poll{1};
    std::chrono::seconds lease{300};  // extended while a command runs
};

// Runs until nothing is due or a signal comes, then tells what became of the recipients. The process is connected to
// the queue. Throws BrokenOutput.
Exit run_deliveries(const RunOptions& options, const DeliveryCommand& command, const RetryPlan& plan, Session& main);

}  // namespace vel::command

#endif
