#include "tools/report/bounce_reader.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "tools/report/field_value.h"
#include "tools/report/status_code.h"
#include "tools/text/ascii.h"

namespace vel::command {
namespace {

// Behind an address the time, or the phrase once more: "(unrecoverable error)".
bool is_aside(std::string_view rest) { return rest.starts_with("on ") || last_phrase(lower(rest), 0).phrase; }

std::string_view without_colon(std::string_view rest) {
    return rest.substr(std::min(rest.size(), rest.find_first_not_of(":. \t")));
}

// A line that is followed by what it tells of.
bool is_heading(std::string_view line) { return line.ends_with(':') || line.ends_with('-'); }

// "host mx.example.com[192.0.2.1] said: ...", "192.0.2.1 does not like recipient.", in any case.
std::string_view host_told_in(std::string_view reason) {
    constexpr std::array<std::string_view, 3> before{"host ", "host: ", "connected to "};
    constexpr std::array<std::string_view, 2> behind{" does not like ", " failed after "};
    for (const std::string_view mark : before) {
        if (begins(reason, mark))
            return reason.substr(mark.size(), reason.find_first_of(" [:\t", mark.size()) - mark.size());
    }
    const std::string_view host = reason.substr(0, reason.find(' '));
    const std::string_view rest = reason.substr(host.size());
    return begins(rest, behind[0]) || begins(rest, behind[1]) ? host : std::string_view();
}

// A reason that speaks against the phrase above, which was of others.
bool is_refusal(const ReportedRecipient& recipient) {
    const std::string_view code = enhanced_code_in(recipient.reason), reply = reply_code_in(recipient.reason);
    const char of_class = !code.empty() ? code.front() : !reply.empty() ? reply.front() : '\0';
    const Fate fate = fate_of(recipient.action, {}, {});
    return (fate == Fate::delivered || fate == Fate::relayed) && (of_class == '4' || of_class == '5');
}

}  // namespace

bool BounceReader::take(std::string_view line) {
    indent_ = std::min(line.size(), line.find_first_not_of(" \t"));
    line = trimmed(line);
    const std::string_view lowered = move_window_to(line);
    if (ends_report(lowered, indent_ > 0)) return false;
    if (line.empty()) {
        take_blank();
    } else if (transcript_.begin(lowered)) {
        told_ = Told::nothing;
    } else if (transcript_.has_begun()) {
        transcript_.take(line, recipients_);
    } else {
        take_text(line);
    }
    if (!line.empty()) is_parted_ = false;
    return true;
}

// Returns the line in lower case.
std::string_view BounceReader::move_window_to(std::string_view line) {
    window_.erase(0, is_parted_ ? window_.size() : window_.size() - tail_of(window_).size());
    window_ += ' ';
    window_line_ = window_.size();
    std::transform(line.begin(), line.end(), std::back_inserter(window_), [](char c) { return lower(c); });
    return std::string_view(window_).substr(window_line_);
}

bool BounceReader::ends_report(std::string_view line, bool is_indented) const {
    const bool is_trace = !is_indented && (line.starts_with("received:") || line.starts_with("return-path:"));
    return (!recipients_.empty() || !reason_for_all_.empty()) && (is_trace || announces_return(line));
}

void BounceReader::take_blank() {
    if (told_ != Told::nothing && !reason().empty() && !awaits_reason_) told_ = Told::nothing;
    is_parted_ = true;
}

void BounceReader::take_text(std::string_view line) {
    const Labelled told = labelled(line);
    if (told.label == Label::none && continues_reason(line)) return take_reason(line);
    if (take_label(told) || take_phrase(line)) return;
    if (!take_recipients(told.label == Label::address ? told.text : line)) take_reason(line);
}

// Reasons name other addresses, and say in their words what has failed.
bool BounceReader::continues_reason(std::string_view line) const {
    if (is_heading(line)) return false;
    if (told_ == Told::recipient) return !is_parted_ && indent_ > last_indent_;
    const auto named = address_at(line);
    return told_ == Told::all && (reason_for_all_.empty() || !is_parted_) && !(named && stands_alone(named->rest));
}

// What tells of a recipient goes to the last one that was named, however far above.
bool BounceReader::take_label(const Labelled& told) {
    if (told.label == Label::none || told.label == Label::address) return false;
    if (told.label == Label::aside) return true;
    if (!last_ && told_ != Told::all) return false;
    if (last_) told_ = Told::recipient;
    if (told.label == Label::host) {
        if (told_ == Told::recipient) recipients_[*last_].remote_mta = host_in(told.text);
        return true;
    }
    awaits_reason_ = told.text.empty();
    add_to_reason(told.label == Label::diagnostic ? typed(told.text).value : told.text);
    return true;
}

// Phrases may be broken over two lines.
bool BounceReader::take_phrase(std::string_view line) {
    const FoundPhrase found = last_phrase(window_, window_line_);
    if (!found.phrase) return false;
    action_ = found.phrase->action;
    told_ = Told::nothing;
    if (const auto named = address_around(found, line)) {
        take_named(*named);
    } else if (!take_recipients(line) && found.phrase->tells_why_next) {
        told_ = Told::all;
        action_for_all_ = action_;
    }
    return true;
}

// Behind an address in a sentence, the sentence goes on.
void BounceReader::take_named(const LineAddress& named) {
    if (!select(named.address, action_)) return;
    if (stands_alone(named.rest) || labelled(named.rest).label == Label::reason) {
        take_reason(without_colon(named.rest));
    } else {
        told_ = Told::nothing;
    }
}

// The address that a phrase names itself, behind or before it.
std::optional<LineAddress> BounceReader::address_around(const FoundPhrase& phrase, std::string_view line) const {
    constexpr std::string_view to = "message to ";
    std::string_view behind = line.substr(phrase.end - window_line_);
    behind.remove_prefix(std::min(behind.size(), behind.find_first_not_of(": ")));
    if (const auto named = address_at(behind)) return named;
    const std::size_t opening = window_.find(to, window_line_);
    if (opening == window_.npos || opening > phrase.start) return std::nullopt;
    auto named = address_at(line.substr(opening - window_line_ + to.size()));
    if (named) named->rest = {};
    return named;
}

bool BounceReader::take_recipients(std::string_view line) {
    if (action_.empty()) return false;
    bool any = false;
    for (auto found = address_at(line);; found = address_at(line)) {
        if (!found && !any && (is_parted_ || told_ == Told::nothing)) {
            found = mailbox_at(line);
            if (!found) found = name_at(line);
        }
        if (!found || !stands_alone(found->rest)) break;
        if (!any && told_ == Told::recipient && recipients_.known(found->address)) return false;  // a reason names it
        any = true;
        line = found->rest;
        if (!select(found->address, action_)) continue;
        if (line.starts_with(',') || line.starts_with(';')) {
            line.remove_prefix(1);
            continue;
        }
        if (!is_aside(line)) take_reason(without_colon(line));
        break;
    }
    return any;
}

// Behind a blank line only what is clearly a reason is one.
void BounceReader::take_reason(std::string_view line) {
    if (told_ == Told::nothing || line.empty()) return;
    const Labelled labelled_reason = labelled(line);
    const bool is_clear =
        told_ == Told::all || awaits_reason_ || labelled_reason.label == Label::reason || has_code(line);
    if (is_parted_ && !is_clear) {
        told_ = Told::nothing;
        return;
    }
    awaits_reason_ = false;
    add_to_reason(labelled_reason.label == Label::reason ? labelled_reason.text : line);
}

void BounceReader::add_to_reason(std::string_view text) {
    add_reason(reason(), text);
    if (told_ != Told::recipient) return;
    ReportedRecipient& recipient = recipients_[*last_];
    if (recipient.remote_mta.empty()) recipient.remote_mta = host_told_in(text);
}

// The recipient that the next lines tell of; false when there is no room.
bool BounceReader::select(std::string_view address, std::string_view action) {
    last_ = recipients_.place_of(address, action);
    told_ = last_ ? Told::recipient : Told::nothing;
    last_indent_ = indent_;
    is_parted_ = awaits_reason_ = false;
    return last_.has_value();
}

void BounceReader::finish() {
    if (recipients_.empty() && !reason_for_all_.empty()) select("", action_for_all_);
    const std::string& otherwise = reason_for_all_.empty() ? transcript_.refusal() : reason_for_all_;
    for (ReportedRecipient& recipient : recipients().kept()) {
        if (recipient.reason.empty()) recipient.reason = otherwise;
        recipient.status = enhanced_code_in(recipient.reason);
        if (is_refusal(recipient)) recipient.action = "failed";
        recipient.fate = fate_of(recipient.action, recipient.status, recipient.reason);
    }
}

}  // namespace vel::command
