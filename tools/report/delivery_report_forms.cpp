// Delivery reports for people and for programs.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "tools/io/table.h"
#include "tools/message/message_json.h"
#include "tools/report/delivery_report.h"
#include "tools/text/facts.h"
#include "tools/text/text_forms.h"

namespace vel::command {
namespace {

std::string cell(std::string_view text) { return text.empty() ? "-" : visible(text); }

Json text_or_null(std::string_view text) { return text.empty() ? Json() : Json(json_text(text)); }

bool names_all(const ReportedRecipients& recipients) {
    return std::none_of(recipients.kept().begin(), recipients.kept().end(),
                        [](const ReportedRecipient& recipient) { return recipient.address.empty(); });
}

Json recipient_json(const ReportedRecipient& recipient) {
    return {
        {"address", text_or_null(recipient.address)},
        {"original", text_or_null(recipient.original)},
        {"verdict", name_of(recipient.fate)},
        {"action", text_or_null(recipient.action)},
        {"status", text_or_null(recipient.status)},
        {"reason", text_or_null(recipient.reason)},
        {"remote_mta", text_or_null(recipient.remote_mta)},
        {"last_attempt", text_or_null(recipient.last_attempt)},
        {"retry_until", text_or_null(recipient.retry_until)},
    };
}

}  // namespace

void write_report(const DeliveryReport& report, Output& output) {
    Facts facts;
    facts.add("message", report.returned.message_id);
    if (report.returned.subject) facts.add_shown("subject", shown(*report.returned.subject));
    if (!names_all(report.recipients)) facts.add("addressed to", report.returned.addressees);
    facts.add("envelope id", report.message.envelope_id);
    facts.add("arrived", report.message.arrival_date);
    facts.add("reported by", report.message.reporting_mta);
    if (const std::string about = facts.text(); !about.empty()) output.write(about + "\n");
    Table table({{"recipient"}, {"verdict"}, {"action"}, {"status"}, {"remote host"}, {"reason"}});
    for (const ReportedRecipient& recipient : report.recipients.kept()) {
        table.add({cell(recipient.address), name_of(recipient.fate), cell(recipient.action), cell(recipient.status),
                   cell(recipient.remote_mta), cell(recipient.reason)});
    }
    table.print(output);
    if (const uint64_t more = report.recipients.left_out(); more > 0) {
        output.write(std::string("and ").append(std::to_string(more)).append(" more\n"));
    }
}

Json report_json(const DeliveryReport& report) {
    Json recipients = Json::array();
    for (const ReportedRecipient& recipient : report.recipients.kept()) recipients.push_back(recipient_json(recipient));
    return {
        {"kind", report.for_programs ? "fields" : "text"},
        {"part", report.part ? Json(*report.part) : Json()},
        {"reporting_mta", text_or_null(report.message.reporting_mta)},
        {"arrival_date", text_or_null(report.message.arrival_date)},
        {"envelope_id", text_or_null(report.message.envelope_id)},
        {"message_id", text_or_null(report.returned.message_id)},
        {"subject", readable_json(report.returned.subject)},
        {"addressees", text_or_null(report.returned.addressees)},
        {"recipients", std::move(recipients)},
        {"left_out", report.recipients.left_out()},
    };
}

}  // namespace vel::command
