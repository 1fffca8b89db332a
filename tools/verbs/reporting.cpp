#include "tools/verbs/reporting.h"

#include <nlohmann/json.hpp>

#include "tools/compose/content_facts.h"
#include "tools/compose/delivery_wishes.h"
#include "tools/compose/header_words.h"
#include "tools/compose/mail_text.h"
#include "tools/compose/mailbox.h"
#include "tools/compose/text_chain.h"
#include "tools/io/input.h"
#include "tools/io/library_scratch.h"
#include "tools/io/lines.h"
#include "tools/queue/connection.h"
#include "tools/settings/gateway_name.h"
#include "tools/text/hex_escapes.h"
#include "tools/text/json_line.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/named_message.h"
#include "tools/verbs/recipient_status.h"

namespace vel::command {
namespace {

constexpr const char* kNobody = "<>";

// The text for people, in the charset that is told of it.
struct ReportText {
    std::vector<std::string> lines;  // a long one in pieces
    const char* charset;
};

ReportText read_text(const std::string& file, Session& session) {
    const Input given = open_as_it_stands(file, session);
    const PrivateFile text = as_mail_text(given.path, "", session.scratch);
    const ContentFacts facts = facts_of(text.path());
    // Of other texts the report has quoted-printable.
    if (!facts.is_text || (facts.is_ascii && !facts.fit_7bit())) {
        throw Failure(Exit::bad_data, "has NUL bytes, CR within a line or lines of more than 998 bytes");
    }
    ReportText result{{}, facts.is_ascii ? "us-ascii" : "utf-8"};
    LineReader reader(text.path());
    while (const auto line = reader.next()) result.lines.emplace_back(line->text);
    return result;
}

std::vector<RecipientStatus> statuses_of(const std::vector<std::string>& texts) {
    std::vector<RecipientStatus> statuses;
    for (const std::string& text : texts) statuses.push_back(parse_recipient_status(text));
    return statuses;
}

// What is asked for, checked, and what the queue knows of the message.
struct Report {
    std::string base, subject, sender, envelope_id;
    int32_t return_type;
    time_t arrival;
};

// Throws Failure.
Report report_of(const ReportOptions& options) {
    constexpr std::size_t kFieldName = 9;  // "Subject: "
    expect_one_line("--subject", options.subject);
    expect_envelope_id(options.envelope_id);
    Report report{{},
                  header_text(options.subject, kFieldName),
                  options.sender,
                  options.envelope_id,
                  return_type(options.ret),
                  std::time(nullptr)};
    if (!report.sender.empty() && report.sender != kNobody) {
        report.sender = parse_mailbox("--sender", report.sender).canonical;
    }
    return report;
}

// Throws Failure.
void find_message_of(Report& report, const std::string& name, Session& session) {
    const NamedMessage message = find_message(name, report.sender.empty(), session);
    report.base = message.base;
    if (!message.entry) return;
    const _envFrom& envelope = message.entry->sender;
    report.arrival = static_cast<time_t>(message.entry->arrival / kMicroseconds);
    if (report.sender.empty()) report.sender = *envelope.address ? envelope.address : kNobody;
    if (report.envelope_id.empty()) report.envelope_id = envelope.envelopeId;
    if (report.return_type == 0) report.return_type = envelope.returnType;
}

// An envelope's identifier is xtext, but not in a report (RFC 3461 section 4.4).
int generate(const Report& report, const ReportText& text, const StatusChain& recipients, Session& session) {
    const LibraryScratch scratch(session.scratch);
    const SettingInForce charset("Gateway", "LocalCharSet", text.charset);
    const TextChain lines(text.lines);
    const std::string envelope_id = without_hex_escapes(report.envelope_id, '+');
    const DSNEnvelope envelope{report.sender.c_str(), envelope_id.c_str(), report.return_type, 0, report.arrival};
    return GenerateDSNMessage(report.base.c_str(), &envelope, report.subject.c_str(), lines.get(), recipients.get());
}

}  // namespace

void send_report(const ReportOptions& options, bool json, Session& session) {
    Report report = report_of(options);
    const StatusChain recipients(statuses_of(options.recipients));
    const ReportText text = under_name(options.text_file, [&] { return read_text(options.text_file, session); });
    gateway_name();
    connect_to_queue(session);
    find_message_of(report, options.message, session);
    session.journal.take();
    if (generate(report, text, recipients, session) != 0) {
        throw queue_failure(session, "the report has not been sent", Exit::temporary);
    }
    const bool has_sender = report.sender != kNobody;
    const Json object{{"outcome", has_sender ? "reported" : "to_postmaster"},
                      {"to", has_sender ? Json(json_text(report.sender)) : Json()}};
    const std::string told =
        has_sender ? std::string("reported to ").append(visible(report.sender)) : "sent to the postmaster";
    session.output.write((json ? one_line(object) : told) + "\n");
}

}  // namespace vel::command
