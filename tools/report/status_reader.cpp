#include "tools/report/status_reader.h"

#include <array>
#include <utility>

#include "tools/report/field_value.h"
#include "tools/report/status_code.h"
#include "tools/text/ascii.h"

namespace vel::command {
namespace {

using Fields = StatusReader::Fields;

struct RecipientField {
    std::string_view name;
    std::string Fields::*place;
    bool begins = false;  // coming once more, it begins the next recipient; of others the first counts
};

constexpr std::array kRecipientFields{
    RecipientField{"Final-Recipient", &Fields::final_recipient, true},
    RecipientField{"Original-Recipient", &Fields::original_recipient, true},
    RecipientField{"Action", &Fields::action, true},
    RecipientField{"Status", &Fields::status},
    RecipientField{"Remote-MTA", &Fields::remote_mta},
    RecipientField{"Diagnostic-Code", &Fields::diagnostic},
    RecipientField{"Last-Attempt-Date", &Fields::last_attempt},
    RecipientField{"Will-Retry-Until", &Fields::retry_until},
};

struct MessageField {
    std::string_view name;
    std::string ReportedMessage::*place;
};

constexpr std::array kMessageFields{
    MessageField{"Reporting-MTA", &ReportedMessage::reporting_mta},
    MessageField{"Arrival-Date", &ReportedMessage::arrival_date},
    MessageField{"Original-Envelope-Id", &ReportedMessage::envelope_id},
};

ReportedRecipient recipient_of(Fields& fields) {
    ReportedRecipient recipient;
    recipient.original = address_in(fields.original_recipient);
    recipient.address = address_in(fields.final_recipient);
    if (recipient.address.empty()) recipient.address = recipient.original;
    recipient.action = lower(without_comments(fields.action));
    recipient.reason = typed(fields.diagnostic).value;
    if (recipient.reason.empty()) recipient.reason = comment_of(fields.status);
    const std::string_view code = enhanced_code_in(fields.status);
    recipient.status = code.empty() ? trimmed(fields.status) : code;
    recipient.remote_mta = host_in(fields.remote_mta);
    recipient.last_attempt = trimmed(fields.last_attempt);
    recipient.retry_until = trimmed(fields.retry_until);
    recipient.fate = fate_of(recipient.action, fields.status, recipient.reason);
    return recipient;
}

}  // namespace

void StatusReader::finish() {
    end_recipient();
    message_.reporting_mta = host_in(message_.reporting_mta);
}

void StatusReader::take(std::string_view line, bool begins_line) {
    if (begins_line && trimmed(line).empty()) return end_recipient();
    const bool folded = begins_line && (line.front() == ' ' || line.front() == '\t');
    if (begins_line && !folded) return begin_field(line);
    if (!field_) return;
    if (folded) append_report_text(*field_, " ");
    append_report_text(*field_, folded ? trimmed(line) : line.substr(0, line.find_first_of("\r\n")));
}

std::string* StatusReader::place_of(std::string_view name) {
    for (const RecipientField& row : kRecipientFields) {
        if (!same(row.name, name)) continue;
        if (!(fields_.*row.place).empty()) {
            if (!row.begins) return nullptr;
            end_recipient();
        }
        return &(fields_.*row.place);
    }
    for (const MessageField& row : kMessageFields) {
        if (same(row.name, name) && (message_.*row.place).empty()) return &(message_.*row.place);
    }
    return nullptr;
}

void StatusReader::begin_field(std::string_view line) {
    const std::size_t colon = line.find(':');
    field_ = colon == std::string_view::npos ? nullptr : place_of(trimmed(line.substr(0, colon)));
    if (field_) append_report_text(*field_, trimmed(line.substr(colon + 1)));
}

bool StatusReader::counts() const {
    const bool has_address = !fields_.final_recipient.empty() || !fields_.original_recipient.empty();
    const bool has_code = !fields_.action.empty() || !fields_.status.empty() || !fields_.diagnostic.empty();
    return found_ == Found::in_text ? has_address && has_code : has_address || has_code;
}

void StatusReader::end_recipient() {
    field_ = nullptr;
    if (counts()) recipients_.add(recipient_of(fields_));
    fields_ = {};
}

}  // namespace vel::command
