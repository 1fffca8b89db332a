// Delivery reports, whoever made them: those for programs (RFC 3464, RFC 6533), and what mailers write for people.
#ifndef VEL_TOOLS_REPORT_DELIVERY_REPORT_H
#define VEL_TOOLS_REPORT_DELIVERY_REPORT_H

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "tools/io/session.h"
#include "tools/message/message.h"
#include "tools/report/reported_recipient.h"
#include "tools/report/returned_message.h"
#include "tools/report/status_reader.h"

namespace vel::command {

using Json = nlohmann::ordered_json;

struct DeliveryReport {
    bool for_programs = false;  // the recipients come from fields, else from a text for people
    std::optional<int> part;    // that they come from; nothing: an uncovered range, a header field
    ReportedMessage message;
    ReturnedMessage returned;
    ReportedRecipients recipients;
};

// Finds the report in a message: in the message itself, else in one that it encloses, the outer one first. Fields
// for programs go before texts, which then tell the reasons that the fields leave out; a text by itself counts where
// the message looks as if a mailer has written it. Throws Failure when there is no report, or none on a recipient.
DeliveryReport read_delivery_report(const ParsedMessage& message, Session& session);

// Labelled lines about the message, and a table of recipients.
void write_report(const DeliveryReport& report, Output& output);

// kind, part, reporting_mta, arrival_date, envelope_id, message_id, subject, addressees,
// recipients, left_out.
Json report_json(const DeliveryReport& report);

}  // namespace vel::command

#endif
