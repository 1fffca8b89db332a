#include "tools/report/status_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

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

// A value with its type before it: "rfc822; ann@example.com". One without a type has none.
struct Typed {
    std::string_view type, value;
};

Typed typed(std::string_view text) {
    const std::size_t end = text.find(';');
    const std::string_view type = trimmed(text.substr(0, end));
    const bool is_type = end != std::string_view::npos && type.find_first_of(" \t<>@") == std::string_view::npos;
    return is_type ? Typed{type, trimmed(text.substr(end + 1))} : Typed{{}, trimmed(text)};
}

// "\x{E9}" becomes the character (RFC 6533 section 3); what is no such escape stays.
std::string without_unicode_escapes(std::string_view text) {
    constexpr std::string_view opening = "\\x{";
    std::string result;
    while (!text.empty()) {
        const std::size_t escape = std::min(text.find(opening), text.size());
        result += text.substr(0, escape);
        text.remove_prefix(escape);
        if (text.empty()) break;
        uint32_t code = 0;
        const auto [end, error] = std::from_chars(text.data() + opening.size(), text.data() + text.size(), code, 16);
        const bool is_escape = error == std::errc() && end != text.data() + text.size() && *end == '}' &&
                               code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
        if (is_escape) append_utf8(result, static_cast<char32_t>(code));
        const std::size_t length = is_escape ? static_cast<std::size_t>(end + 1 - text.data()) : opening.size();
        if (!is_escape) result += opening;
        text.remove_prefix(length);
    }
    return result;
}

std::string address_in(std::string_view field) {
    auto [type, value] = typed(field);
    if (value.starts_with('<') && value.ends_with('>')) value = value.substr(1, value.size() - 2);
    return same(type, "utf-8") ? without_unicode_escapes(value) : std::string(value);
}

// What stands in the comment behind a code: "5.0.0 (permanent failure)".
std::string_view comment_of(std::string_view status) {
    const std::size_t opening = status.find('(');
    const std::size_t closing = status.rfind(')');
    if (opening == std::string_view::npos || closing == std::string_view::npos || closing < opening) return {};
    return status.substr(opening + 1, closing - opening - 1);
}

ReportedRecipient recipient_of(Fields& fields) {
    ReportedRecipient recipient;
    recipient.original = address_in(fields.original_recipient);
    recipient.address = address_in(fields.final_recipient);
    if (recipient.address.empty()) recipient.address = recipient.original;
    recipient.action = lower(trimmed(fields.action));
    recipient.reason = typed(fields.diagnostic).value;
    if (recipient.reason.empty()) recipient.reason = comment_of(fields.status);
    const std::string_view code = enhanced_code_in(fields.status);
    recipient.status = code.empty() ? trimmed(fields.status) : code;
    recipient.remote_mta = typed(fields.remote_mta).value;
    recipient.last_attempt = trimmed(fields.last_attempt);
    recipient.retry_until = trimmed(fields.retry_until);
    recipient.fate = fate_of(recipient.action, fields.status, recipient.reason);
    return recipient;
}

}  // namespace

void StatusReader::finish() {
    end_recipient();
    message_.reporting_mta = typed(message_.reporting_mta).value;
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
