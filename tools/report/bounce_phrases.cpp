#include "tools/report/bounce_phrases.h"

#include <algorithm>
#include <array>
#include <string>

#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr std::string_view kFailed = "failed", kDelayed = "delayed", kDelivered = "delivered", kRelayed = "relayed";

constexpr std::array kPhrases{
    BouncePhrase{"permanent fatal errors", kFailed},
    BouncePhrase{"unrecoverable error", kFailed},
    BouncePhrase{"had delivery problems", kFailed},
    BouncePhrase{"have delivery notifications", kFailed},
    BouncePhrase{"failed addresses follow", kFailed},
    BouncePhrase{"could not be delivered", kFailed},
    BouncePhrase{"could not be delivered to", kFailed},
    BouncePhrase{"couldn't be delivered to", kFailed},
    BouncePhrase{"cannot be delivered", kFailed},
    BouncePhrase{"can't be delivered", kFailed},
    BouncePhrase{"could not deliver", kFailed},
    BouncePhrase{"able to deliver your message", kFailed},  // "wasn't", "not", "un-"
    BouncePhrase{"unable to deliver", kFailed},
    BouncePhrase{"not delivered to", kFailed},
    BouncePhrase{"wasn't delivered to", kFailed},
    BouncePhrase{"not been delivered to", kFailed},
    BouncePhrase{"undeliverable to", kFailed},
    BouncePhrase{"did not reach", kFailed},
    BouncePhrase{"could not be reached", kFailed},
    BouncePhrase{"address(es) failed", kFailed},
    BouncePhrase{"recipients failed", kFailed},
    BouncePhrase{"recipient(s) failed", kFailed},
    BouncePhrase{"failed permanently", kFailed},
    BouncePhrase{"delivery has failed to", kFailed},
    BouncePhrase{"failed to deliver to", kFailed},
    BouncePhrase{"transient non-fatal errors", kDelayed},
    BouncePhrase{"transient failure", kDelayed},
    BouncePhrase{"warning message only", kDelayed},
    BouncePhrase{"still undelivered", kDelayed},
    BouncePhrase{"not yet been delivered", kDelayed},
    BouncePhrase{"has been delayed", kDelayed},
    BouncePhrase{"will be retried", kDelayed},
    BouncePhrase{"temporary problem delivering your message to", kDelayed},
    BouncePhrase{"successful delivery notifications", kDelivered},
    BouncePhrase{"successfully delivered to", kDelivered},
    BouncePhrase{"no delivery notification was sent", kRelayed},
    BouncePhrase{"relayed to non-dsn", kRelayed},
};

constexpr std::array<std::string_view, 11> kAnnouncements{
    "original message follows",  "unsent message follows",       "returned message follows",
    "message header follows",    "message headers follow",       "message text follows",
    "below this line is a copy", "this is a copy of ",           "headers of the original message",
    "original message header",   "----- original message -----",
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
    Sign{"Subject", "failure notice", {}},
    Sign{"Subject", "mail delivery failed", {}},
    Sign{"Subject", "delivery failure", {}},
    Sign{"Subject", "delivery status notification", {}},
    Sign{"Subject", "delivery notification", {}},
};

}  // namespace

FoundPhrase last_phrase(std::string_view text, std::size_t behind) {
    FoundPhrase found;
    for (const BouncePhrase& row : kPhrases) {
        const std::size_t start = text.rfind(row.text);
        if (start == std::string_view::npos) continue;
        const std::size_t end = start + row.text.size();
        if (end > behind && end > found.end) found = {&row, end};
    }
    return found;
}

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
