// Kept: fields go out as they are given; their names have the letters, and the blank or none behind them, that stand
// here.
#include "notify/status_fields.h"

#include <array>

#include "build/envelope_address.h"
#include "build/texts.h"
#include "rfc822/date.h"
#include "vel/rfc822.h"

namespace vel {
namespace {

constexpr std::size_t kUncut = std::string_view::npos;
constexpr std::size_t kLongestMta = 256;

struct TextField {
    std::string_view name;
    char* PerRecipField::*text;
    std::size_t longest;
};

constexpr std::array kTexts = {
    TextField{"Original-Recipient: ", &PerRecipField::originalRecipient, kUncut},
    TextField{"Final-Recipient: rfc822;", &PerRecipField::finalRecipient, kUncut},
    TextField{"Action: ", &PerRecipField::action, kUncut},
    TextField{"Status: ", &PerRecipField::status, kUncut},
    TextField{"Remote-MTA: DNS; ", &PerRecipField::remoteMta, kLongestMta},
    TextField{"Diagnostic-code: smtp;", &PerRecipField::diagnosticCode, kUncut},
};

struct TimeField {
    std::string_view name;
    int32_t PerRecipField::*time;
};

constexpr std::array kTimes = {
    TimeField{"Last-attempt-date: ", &PerRecipField::lastAttempt},
    TimeField{"Will-retry-until: ", &PerRecipField::willRetryUntil},
};

bool put_field(std::string_view name, std::string_view value, NewFile& file) {
    return file.put(name) && file.put(value) && file.put(kLineEnd);
}

bool put_date(std::string_view name, std::time_t time, NewFile& file) {
    char text[kDateTextSize];
    time_t2rfc822date(time, text);
    return put_field(name, text, file);
}

bool put_message(const char* envelope_id, std::time_t arrival, NewFile& file) {
    return (is_empty(envelope_id) || put_field("Original-Envelope-Id: ", envelope_id, file)) &&
           put_field("Reporting-MTA: DNS; ", gateway_name(), file) && put_date("Arrival-Date: ", arrival, file) &&
           file.put(kLineEnd);
}

bool put_recipient(const PerRecipField& recipient, NewFile& file) {
    for (const TextField& field : kTexts) {
        const std::string_view text = or_empty(recipient.*field.text);
        if (!text.empty() && !put_field(field.name, text.substr(0, field.longest), file)) return false;
    }
    for (const TimeField& field : kTimes) {
        if (recipient.*field.time > 0 && !put_date(field.name, recipient.*field.time, file)) return false;
    }
    return file.put(kLineEnd);
}

}  // namespace

bool put_status(const char* envelope_id, std::time_t arrival, const PerRecipChain* recipients, NewFile& file) {
    if (!put_message(envelope_id, arrival, file)) return false;
    for (; recipients; recipients = recipients->next) {
        if (recipients->record && !put_recipient(*recipients->record, file)) return false;
    }
    return true;
}

}  // namespace vel
