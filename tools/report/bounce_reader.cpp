#include "tools/report/bounce_reader.h"

#include <algorithm>
#include <array>
#include <utility>

#include "tools/report/bounce_phrases.h"
#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr std::string_view kTranscript = "transcript of session follows";
constexpr std::string_view kTalkingTo = "while talking to ";
constexpr std::string_view kReplyMark = "<<<";
constexpr std::string_view kDots = "...";

// What stands before an address or a reason.
constexpr std::array<std::string_view, 6> kAddressLabels{
    "recipient address:", "recipient:", "failed recipient:", "address:", "user:", "to:"};
constexpr std::array<std::string_view, 7> kReasonLabels{"(reason:",
                                                        "reason:",
                                                        "because:",
                                                        "because",
                                                        "the error was:",
                                                        "technical details of permanent failure:",
                                                        "technical details of temporary failure:"};

// What may stand behind an address where it does not belong to a sentence.
constexpr std::array<std::string_view, 7> kBehindAddress{":", "(", ",", ";", "-", "...", "on "};

template <std::size_t size>
bool remove_label(std::string_view& line, const std::array<std::string_view, size>& labels) {
    const auto* label = std::find_if(labels.begin(), labels.end(), [&](auto text) { return begins(line, text); });
    if (label == labels.end()) return false;
    line = trimmed(line.substr(label->size()));
    return true;
}

struct FoundAddress {
    std::string_view address;
    std::string_view rest;  // of the line
};

// An address at the beginning of a text, in brackets or quotes perhaps. Without an "@" only one in brackets is.
std::optional<FoundAddress> address_at(std::string_view text) {
    text.remove_prefix(std::min(text.size(), text.find_first_not_of(" \t*'\"")));
    const bool bracketed = text.starts_with('<');
    if (bracketed) text.remove_prefix(1);
    const std::size_t end = std::min(text.size(), text.find_first_of(bracketed ? "> \t" : " \t<>(),;:'\"*"));
    std::string_view address = text.substr(0, end);
    std::string_view rest = text.substr(end);
    if (bracketed && !rest.starts_with('>')) return std::nullopt;
    const std::size_t dots = bracketed ? std::string_view::npos : address.find(kDots);
    if (dots != std::string_view::npos) {
        rest = text.substr(dots);
        address = address.substr(0, dots);
    }
    const std::size_t at = address.rfind('@');
    const bool is_address =
        at == std::string_view::npos ? bracketed && !address.empty() : at > 0 && at + 1 < address.size();
    if (!is_address) return std::nullopt;
    rest.remove_prefix(std::min(rest.size(), rest.find_first_not_of(bracketed ? ">*'\" \t" : "*'\" \t")));
    return FoundAddress{address, rest};
}

bool stands_alone(std::string_view rest) {
    return rest.empty() || std::any_of(kBehindAddress.begin(), kBehindAddress.end(),
                                       [&](std::string_view text) { return rest.starts_with(text); });
}

// Behind an address the time, or the phrase once more: "(unrecoverable error)".
bool is_aside(std::string_view rest) { return rest.starts_with("on ") || last_phrase(lower(rest), 0).phrase; }

bool has_code(std::string_view text) { return !enhanced_code_in(text).empty() || !reply_code_in(text).empty(); }

// "host mx.example.com[192.0.2.1] said: ...", in any case.
std::string_view host_in(std::string_view reason) {
    constexpr std::string_view mark = "host ";
    if (!begins(reason, mark)) return {};
    const std::string_view host = reason.substr(mark.size());
    return host.substr(0, host.find_first_of(" [:\t"));
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

}  // namespace

bool BounceReader::take(std::string_view line) {
    const bool indented = line.find_first_of(" \t") == 0;
    line = trimmed(line);
    const std::string lowered = lower(line);
    const bool is_trace = !indented && (lowered.starts_with("received:") || lowered.starts_with("return-path:"));
    if (!recipients_.empty() && (is_trace || announces_return(lowered))) return false;
    if (line.empty()) {
        if (current_ && !recipients_.kept()[*current_].reason.empty()) current_.reset();
        is_parted_ = true;
    } else if (lowered.find(kTranscript) != std::string::npos) {
        in_transcript_ = true;
        current_.reset();
    } else if (in_transcript_) {
        take_transcript(line);
    } else if (!take_phrase(line, lowered) && !take_recipients(line)) {
        take_reason(line);
    }
    previous_ = lowered;
    return true;
}

// Phrases may be broken over two lines. One may name a recipient itself.
bool BounceReader::take_phrase(std::string_view line, std::string_view lowered) {
    const std::string joined = std::string(previous_).append(" ").append(lowered);
    const std::size_t start = previous_.size() + 1;
    const FoundPhrase found = last_phrase(joined, start);
    if (!found.phrase) return false;
    action_ = found.phrase->action;
    current_.reset();
    const auto named = address_at(line.substr(found.end - start));
    if (!named) return take_recipients(line), true;
    if (recipient(named->address, action_)) take_reason(named->rest);
    return true;
}

bool BounceReader::take_recipients(std::string_view line) {
    if (action_.empty()) return false;
    remove_label(line, kAddressLabels);
    bool any = false;
    while (const auto found = address_at(line)) {
        if (!stands_alone(found->rest)) break;
        if (!any && places_.contains(lower(found->address)) && current_) return false;  // a reason that names it
        any = true;
        line = found->rest;
        if (!recipient(found->address, action_)) continue;
        if (line.starts_with(',') || line.starts_with(';')) {
            line.remove_prefix(1);
            continue;
        }
        if (!is_aside(line)) take_reason(line.substr(std::min(line.size(), line.find_first_not_of(":. \t"))));
        break;
    }
    return any;
}

// Behind a blank line only what is clearly a reason is one.
void BounceReader::take_reason(std::string_view line) {
    if (!current_ || line.empty()) return;
    std::string_view text = line;
    const bool labelled = remove_label(text, kReasonLabels);
    if (is_parted_ && !labelled && !has_code(text)) return current_.reset();
    is_parted_ = false;
    if (labelled && line.starts_with('(') && text.ends_with(')')) text.remove_suffix(1);
    ReportedRecipient& recipient = recipients_.kept()[*current_];
    if (!recipient.reason.empty()) append_report_text(recipient.reason, " ");
    append_report_text(recipient.reason, text);
    if (recipient.remote_mta.empty()) recipient.remote_mta = host_in(text);
}

// "... while talking to mx.example.com.:", "<<< 550 5.1.1 no such user", "554 <ann@example.com>... Deferred".
void BounceReader::take_transcript(std::string_view line) {
    const std::size_t host = line.find(kTalkingTo);
    if (host != std::string_view::npos) {
        host_ = line.substr(host + kTalkingTo.size());
        host_.erase(host_.find_last_not_of(".: \t") + 1);
        return;
    }
    if (line.starts_with(kReplyMark)) line = trimmed(line.substr(kReplyMark.size()));
    const Reply reply = reply_in(line);
    if (!reply.code.empty()) reply_ = line;
    const auto found = address_at(reply.text);
    if (!found || !found->rest.starts_with(kDots)) return;
    const bool is_final =
        !reply.code.empty() ? reply.code.front() == '5' : found->rest.find("Deferred") == std::string_view::npos;
    if (!recipient(found->address, is_final ? "failed" : "delayed")) return;
    ReportedRecipient& named = recipients_.kept()[*current_];
    if (named.remote_mta.empty()) named.remote_mta = host_;
    if (named.reason.empty()) take_reason(!reply.code.empty() ? line : trimmed(found->rest.substr(kDots.size())));
    current_.reset();
}

// The recipient with this address, a new one if need be, as the current one; null when there is no room.
ReportedRecipient* BounceReader::recipient(std::string_view address, std::string_view action) {
    current_.reset();
    is_parted_ = false;
    if (recipients_.is_full() && !places_.contains(lower(address))) {
        recipients_.add({});
        return nullptr;
    }
    const auto [place, is_new] = places_.emplace(lower(address), recipients_.kept().size());
    current_ = place->second;
    if (is_new) {
        ReportedRecipient added;
        append_report_text(added.address, address);
        added.action = action;
        recipients_.add(std::move(added));
    }
    return &recipients_.kept()[*current_];
}

void BounceReader::finish() {
    for (ReportedRecipient& recipient : recipients_.kept()) {
        if (recipient.reason.empty()) recipient.reason = reply_;
        const std::string_view code = enhanced_code_in(recipient.reason);
        recipient.status = code;
        recipient.fate = fate_of(recipient.action, recipient.status, recipient.reason);
    }
}

}  // namespace vel::command
