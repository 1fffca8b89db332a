// What vel dsn does without --read: a delivery report goes into the queue.
#ifndef VEL_TOOLS_VERBS_REPORTING_H
#define VEL_TOOLS_VERBS_REPORTING_H

#include <string>
#include <vector>

#include "tools/io/session.h"

namespace vel::command {

// As the command line has it; what is empty the queue's envelope tells.
struct ReportOptions {
    std::string message;  // find_message
    std::string subject, text_file;
    std::vector<std::string> recipients;  // parse_recipient_status
    std::string sender, envelope_id, ret;
};

// Makes a report, puts it into the queue and prints who gets it, with json as an object. Throws Failure: unavailable
// without a queue, temporary when it does not take the report.
void send_report(const ReportOptions& options, bool json, Session& session);

}  // namespace vel::command

#endif
