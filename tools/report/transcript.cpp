#include "tools/report/transcript.h"

#include <algorithm>
#include <array>

#include "tools/report/line_address.h"
#include "tools/report/status_code.h"
#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr std::array<std::string_view, 2> kBeginnings{"transcript of session follows", "session transcript"};
constexpr std::array<std::string_view, 2> kQuestionMarks{">>>", "-->"};
constexpr std::array<std::string_view, 2> kAnswerMarks{"<<<", "<--"};
constexpr std::string_view kDots = "...";

bool remove_mark(std::string_view& line, const std::array<std::string_view, 2>& marks) {
    if (!line.starts_with(marks[0]) && !line.starts_with(marks[1])) return false;
    line = trimmed(line.substr(marks[0].size()));
    return true;
}

struct Reply {
    std::string_view code;  // empty: the line is no reply
    std::string_view text;  // behind the codes
};

Reply reply_in(std::string_view line) {
    const std::string_view code = reply_code_in(line);
    if (code.empty() || code.data() != line.data()) return {{}, line};
    std::string_view text = trimmed(line.substr(std::min(line.size(), code.size() + 1)));
    const std::string_view enhanced = enhanced_code_in(text);
    if (!enhanced.empty() && enhanced.data() == text.data()) text = trimmed(text.substr(enhanced.size()));
    return {code, text};
}

// What stands behind "ann@example.com..." where no code does; empty: nothing has become of the recipient yet.
std::string_view action_told(std::string_view text) {
    if (text.find("Deferred") != text.npos) return "delayed";
    if (begins(text, "sent") || begins(text, "successfully delivered")) return "delivered";
    if (begins(text, "relayed")) return "relayed";
    return begins(text, "connecting") || begins(text, "queued") || begins(text, "recipient ok") ? "" : "failed";
}

std::string_view action_of(const Reply& reply, std::string_view told) {
    if (reply.code.empty()) return action_told(told);
    return reply.code.front() == '5' ? "failed" : reply.code.front() == '4' ? "delayed" : "";
}

}  // namespace

bool Transcript::begin(std::string_view line) {
    const bool begins_here = std::any_of(kBeginnings.begin(), kBeginnings.end(),
                                         [&](std::string_view beginning) { return line.find(beginning) != line.npos; });
    has_begun_ = has_begun_ || begins_here;
    return begins_here;
}

void Transcript::take(std::string_view line, NamedRecipients& recipients) {
    constexpr std::string_view talking_to = "hile talking to ";  // in the middle of a line, or at its beginning
    if (const std::size_t host = line.find(talking_to); host != line.npos) {
        host_ = line.substr(host + talking_to.size());
        host_.erase(host_.find_last_not_of(".: \t") + 1);
    } else if (remove_mark(line, kQuestionMarks)) {
        take_question(line);
    } else {
        remove_mark(line, kAnswerMarks);
        take_answer(line, recipients);
    }
}

void Transcript::take_question(std::string_view line) {
    constexpr std::string_view of_recipient = "rcpt to:";
    asked_.clear();
    if (!begins(line, of_recipient)) return;
    if (const auto found = address_at(line.substr(of_recipient.size()))) asked_ = found->address;
}

void Transcript::take_answer(std::string_view line, NamedRecipients& recipients) {
    const Reply reply = reply_in(line);
    const bool refuses = !reply.code.empty() && reply.code.front() != '2';
    if (refuses) refusal_ = line;
    std::optional<std::size_t> place;
    std::string_view reason = line;
    if (const auto found = address_at(reply.text); found && found->rest.starts_with(kDots)) {
        const std::string_view told = trimmed(found->rest.substr(kDots.size()));
        const std::string_view action = action_of(reply, told);
        if (action.empty()) return;
        place = recipients.place_of(found->address, action);
        if (reply.code.empty()) reason = told;
    } else if (refuses && !asked_.empty()) {
        place = recipients.known(asked_);
    }
    if (!place) return;
    ReportedRecipient& named = recipients[*place];
    if (named.remote_mta.empty()) named.remote_mta = host_;
    if (named.reason.empty()) add_reason(named.reason, reason);
}

}  // namespace vel::command
