#include "tools/report/bounce_phrases.h"

#include <algorithm>
#include <array>
#include <string>

#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr std::string_view kFailed = "failed", kDelayed = "delayed", kDelivered = "delivered", kRelayed = "relayed";

// By their beginnings.
constexpr std::array kPhrases{
    BouncePhrase{"able to deliver your message", kFailed},  // "wasn't", "not"
    BouncePhrase{"address(es) failed", kFailed},
    BouncePhrase{"addresses failed", kFailed},
    BouncePhrase{"be successfully delivered to", kFailed},  // "cannot"
    BouncePhrase{"being returned to sender for the following reasons", kFailed, true},
    BouncePhrase{"bounced to postmaster for the following reason(s)", kFailed, true},
    BouncePhrase{"can't be delivered", kFailed},
    BouncePhrase{"cannot be delivered", kFailed},
    BouncePhrase{"could not be delivered", kFailed},
    BouncePhrase{"could not be delivered to", kFailed},
    BouncePhrase{"could not be reached", kFailed},
    BouncePhrase{"could not deliver", kFailed},
    BouncePhrase{"couldn't be delivered", kFailed},
    BouncePhrase{"couldn't be delivered to", kFailed},
    BouncePhrase{"delivery failed for the following", kFailed},
    BouncePhrase{"delivery has failed to", kFailed},
    BouncePhrase{"did not reach", kFailed},
    BouncePhrase{"did not receive your message", kFailed},
    BouncePhrase{"encountered delivery problems to", kFailed},
    BouncePhrase{"enqueued and undelivered for", kDelayed},
    BouncePhrase{"failed addresses", kFailed},
    BouncePhrase{"failed addresses follow", kFailed},
    BouncePhrase{"failed permanently", kFailed},
    BouncePhrase{"failed to deliver to", kFailed},
    BouncePhrase{"had delivery problems", kFailed},
    BouncePhrase{"had permanent fatal delivery errors", kFailed},
    BouncePhrase{"has been blocked. see technical details", kFailed},
    BouncePhrase{"has been delayed", kDelayed},
    BouncePhrase{"has failed delivery", kFailed},
    BouncePhrase{"have delivery notifications", kFailed},
    BouncePhrase{"invalid recipient:", kFailed},
    BouncePhrase{"no delivery notification was sent", kRelayed},
    BouncePhrase{"not been delivered to", kFailed},
    BouncePhrase{"not been successfully delivered to", kFailed},
    BouncePhrase{"not delivered to", kFailed},
    BouncePhrase{"not successfully delivered to", kFailed},
    BouncePhrase{"not yet been delivered", kDelayed},
    BouncePhrase{"permanent fatal errors", kFailed},
    BouncePhrase{"recipient(s) failed", kFailed},
    BouncePhrase{"recipients failed", kFailed},
    BouncePhrase{"recipients is delayed", kDelayed},
    BouncePhrase{"relayed to non-dsn", kRelayed},
    BouncePhrase{"returned to you for the following reasons", kFailed, true},
    BouncePhrase{"still undelivered", kDelayed},
    BouncePhrase{"successful delivery notifications", kDelivered},
    BouncePhrase{"successfully delivered to", kDelivered},
    BouncePhrase{"temporary problem delivering your message to", kDelayed},
    BouncePhrase{"the user(s) account is", kFailed},
    BouncePhrase{"transient failure", kDelayed},
    BouncePhrase{"transient non-fatal errors", kDelayed},
    BouncePhrase{"unable to deliver", kFailed},
    BouncePhrase{"undeliverable due to the following reason", kFailed, true},
    BouncePhrase{"undeliverable to", kFailed},
    BouncePhrase{"unknown user:", kFailed},
    BouncePhrase{"unrecoverable error", kFailed},
    BouncePhrase{"user unknown:", kFailed},
    BouncePhrase{"warning message only", kDelayed},
    BouncePhrase{"was automatically rejected", kFailed},
    BouncePhrase{"wasn't delivered to", kFailed},
    BouncePhrase{"while trying to deliver the mail to", kFailed},
    BouncePhrase{"will be retried", kDelayed},
};

constexpr std::size_t kLongest = std::max_element(kPhrases.begin(), kPhrases.end(), [](const auto& a, const auto& b) {
                                     return a.text.size() < b.text.size();
                                 }) -> text.size();

constexpr bool is_letter(char c) { return c >= 'a' && c <= 'z'; }

// For each letter where the phrases that begin with it start; the next letter's start is their end.
constexpr std::array<std::size_t, 27> kStarts = [] {
    std::array<std::size_t, 27> starts{};
    for (const BouncePhrase& phrase : kPhrases) ++starts[static_cast<std::size_t>(phrase.text.front() - 'a') + 1];
    for (std::size_t letter = 1; letter < starts.size(); ++letter) starts[letter] += starts[letter - 1];
    return starts;
}();
static_assert(std::is_sorted(kPhrases.begin(), kPhrases.end(),
                             [](const auto& a, const auto& b) { return a.text < b.text; }));
static_assert(std::all_of(kPhrases.begin(), kPhrases.end(),
                          [](const auto& row) { return is_letter(row.text.front()); }));

constexpr std::array<std::string_view, 13> kAnnouncements{
    "original message follows",
    "unsent message follows",
    "returned message follows",
    "message header follows",
    "message headers follow",
    "message text follows",
    "below this line is a copy",
    "this is a copy of ",
    "headers of the original message",
    "original message header",
    "----- original message -----",
    "of the message follows",
    "enclosed are the original headers",
};

struct Sign {
    std::string_view field;
    std::string_view beginning;  // of the value
    std::string_view part;
};

constexpr std::array kSigns{
    Sign{"From", {}, "mailer-daemon"},
    Sign{"From", {}, "mailer daemon"},
    Sign{"From", {}, "postmaster"},
    Sign{"From", {}, "mail delivery"},
    Sign{"From", {}, "mail administrator"},
    Sign{"Return-Path", "<>", {}},
    Sign{"Auto-Submitted", "auto-", {}},
    Sign{"X-Failed-Recipients", {}, "@"},
    Sign{"Content-Type", "multipart/report", {}},
    Sign{"Subject", "returned mail", {}},
    Sign{"Subject", "undeliver", {}},
    Sign{"Subject", "unable to deliver", {}},
    Sign{"Subject", "failure notice", {}},
    Sign{"Subject", "mail delivery failed", {}},
    Sign{"Subject", "delivery failure", {}},
    Sign{"Subject", "delivery status notification", {}},
    Sign{"Subject", "delivery notification", {}},
};

}  // namespace

FoundPhrase last_phrase(std::string_view text, std::size_t behind) {
    FoundPhrase found;
    for (std::size_t at = behind - std::min(behind, kLongest); at < text.size(); ++at) {
        if (!is_letter(text[at]) || (at > 0 && is_letter(text[at - 1]))) continue;
        const auto letter = static_cast<std::size_t>(text[at] - 'a');
        for (std::size_t i = kStarts[letter]; i < kStarts[letter + 1]; ++i) {
            const BouncePhrase& row = kPhrases[i];
            const std::size_t end = at + row.text.size();
            if (end > behind && end > found.end && text.substr(at).starts_with(row.text)) found = {&row, at, end};
        }
    }
    return found;
}

std::string_view tail_of(std::string_view line) { return line.substr(line.size() - std::min(line.size(), kLongest)); }

bool announces_return(std::string_view line) {
    return std::any_of(kAnnouncements.begin(), kAnnouncements.end(),
                       [&](std::string_view text) { return line.find(text) != std::string_view::npos; });
}

bool tells_of_mailer(std::string_view field, std::string_view value) {
    const std::string text = lower(trimmed(value));
    return std::any_of(kSigns.begin(), kSigns.end(), [&](const Sign& sign) {
        return same(sign.field, field) && text.starts_with(sign.beginning) && text.find(sign.part) != std::string::npos;
    });
}

}  // namespace vel::command
