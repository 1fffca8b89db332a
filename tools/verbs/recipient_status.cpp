#include "tools/verbs/recipient_status.h"

#include <algorithm>
#include <array>
#include <utility>

#include "tools/compose/mailbox.h"
#include "tools/io/exit_code.h"
#include "tools/message/date_reading.h"
#include "tools/text/ascii.h"
#include "tools/verbs/texts.h"

namespace vel::command {
namespace {

constexpr const char* kOption = "--recipient";

[[noreturn]] void refuse(std::string_view value, const char* why) {
    throw Failure(Exit::usage, std::string(kOption).append(": ").append(excerpt(value)).append(why));
}

void set_address(std::string& field, std::string_view value) {
    field = parse_mailbox(kOption, std::string(value)).canonical;
}

void set_typed_address(std::string& field, std::string_view value) {
    field = std::string(value.find(';') == value.npos ? "rfc822;" : "").append(value);
}

void set_action(std::string& field, std::string_view value) {
    constexpr std::array<std::string_view, 5> kActions{"failed", "delayed", "delivered", "relayed", "expanded"};
    const auto action =
        std::find_if(kActions.begin(), kActions.end(), [&](std::string_view known) { return same(known, value); });
    if (action == kActions.end()) refuse(value, " is not failed, delayed, delivered, relayed or expanded");
    field = *action;
}

// class "." 1*3digit "." 1*3digit (RFC 3463 section 2)
bool is_status(std::string_view code) {
    const auto take_number = [&] {
        const std::size_t digits = std::min(code.find_first_not_of("0123456789"), code.size());
        code.remove_prefix(digits);
        return digits >= 1 && digits <= 3;
    };
    const auto take_dot = [&] { return code.starts_with('.') && (code.remove_prefix(1), true); };
    if (!code.starts_with('2') && !code.starts_with('4') && !code.starts_with('5')) return false;
    code.remove_prefix(1);
    return take_dot() && take_number() && take_dot() && take_number() && code.empty();
}

void set_status(std::string& field, std::string_view value) {
    if (!is_status(value)) refuse(value, " is no status code, such as 5.1.1");
    field = value;
}

// The library drops what is longer.
void set_host(std::string& field, std::string_view value) {
    constexpr std::size_t kLongest = 255;
    if (value.size() > kLongest) refuse(value, " is longer than 255 bytes");
    field = value;
}

void set_text(std::string& field, std::string_view value) { field = value; }

struct TextMember {
    std::string_view name;
    std::string RecipientStatus::*field;
    void (*set)(std::string& field, std::string_view value);
};
constexpr std::array kTexts{
    TextMember{"original", &RecipientStatus::original, set_typed_address},
    TextMember{"final", &RecipientStatus::final_address, set_address},
    TextMember{"action", &RecipientStatus::action, set_action},
    TextMember{"status", &RecipientStatus::status, set_status},
    TextMember{"remote", &RecipientStatus::remote, set_host},
    TextMember{"diagnostic", &RecipientStatus::diagnostic, set_text},
};

struct TimeMember {
    std::string_view name;
    int32_t RecipientStatus::*field;
};
constexpr std::array kTimes{
    TimeMember{"last-attempt", &RecipientStatus::last_attempt},
    TimeMember{"will-retry", &RecipientStatus::will_retry},
};

// The library reads the years to 2037, so that 32 bits do.
int32_t seconds_of(std::string_view value) {
    const std::optional<DateReading> date = read_date(std::string(value));
    if (!date) refuse(value, " is no date (vel date)");
    return static_cast<int32_t>(seconds_since_1970(date->time));
}

// What goes into a line of a header block in 7 bits, behind the name of its field (RFC 5322 section 2.1.1).
void expect_field_text(std::string_view value) {
    constexpr std::size_t kLongest = 900;
    if (value.empty()) refuse(value, " is no value");
    if (value.size() > kLongest) refuse(value, " is longer than 900 bytes");
    if (!std::all_of(value.begin(), value.end(), [](char c) { return c >= ' ' && c <= '~'; })) {
        refuse(value, " is not one line of ASCII");
    }
}

template <class Members>
auto member_named(const Members& members, std::string_view name) {
    return std::find_if(members.begin(), members.end(), [&](const auto& member) { return member.name == name; });
}

void set_member(RecipientStatus& status, std::string_view name, std::string_view value) {
    constexpr const char* kTwice = " is said twice";
    expect_field_text(value);
    if (const auto text = member_named(kTexts, name); text != kTexts.end()) {
        if (!(status.*text->field).empty()) refuse(name, kTwice);
        text->set(status.*text->field, value);
    } else if (const auto time = member_named(kTimes, name); time != kTimes.end()) {
        if (status.*time->field != 0) refuse(name, kTwice);
        status.*time->field = seconds_of(value);
    } else {
        refuse(name, " is none of original, final, action, status, remote, diagnostic, last-attempt and will-retry");
    }
}

// The name that stands in front of a "=" where a text begins; empty when there is none.
std::string_view member_name(std::string_view text) {
    constexpr std::string_view kOfNames = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ-";
    const std::size_t end = text.find_first_not_of(kOfNames);
    return end != text.npos && text[end] == '=' ? text.substr(0, end) : std::string_view();
}

// Takes what stands in front of the next member.
std::string_view take_member(std::string_view& rest) {
    std::size_t end = rest.find(';');
    std::size_t next = rest.size();
    for (; end != rest.npos; end = rest.find(';', end + 1)) {
        next = std::min(rest.find_first_not_of(' ', end + 1), rest.size());
        if (next == rest.size() || !member_name(rest.substr(next)).empty()) break;
    }
    const std::string_view member = rest.substr(0, end);
    rest.remove_prefix(end == rest.npos ? rest.size() : next);
    return member;
}

}  // namespace

RecipientStatus parse_recipient_status(const std::string& text) {
    RecipientStatus status;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view member = take_member(rest), name = member_name(member);
        if (name.empty()) refuse(member, " is no NAME=VALUE");
        set_member(status, name, member.substr(name.size() + 1));
    }
    if (status.final_address.empty() || status.action.empty() || status.status.empty()) {
        refuse(text, " says not all of final, action and status");
    }
    return status;
}

StatusChain::StatusChain(std::vector<RecipientStatus> recipients)
    : recipients_(std::move(recipients)), records_(recipients_.size()), nodes_(recipients_.size()) {
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        RecipientStatus& of = recipients_[i];
        records_[i] = {of.original.data(), of.final_address.data(), of.action.data(), of.status.data(),
                       of.remote.data(),   of.diagnostic.data(),    of.last_attempt,  of.will_retry};
        nodes_[i] = {&records_[i], i + 1 < nodes_.size() ? &nodes_[i + 1] : nullptr};
    }
}

}  // namespace vel::command
