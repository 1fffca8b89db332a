#include "tools/queue/entry_text.h"

#include <array>
#include <vector>

#include "tools/queue/entries.h"
#include "tools/text/ascii.h"
#include "tools/text/facts.h"
#include "tools/text/instant.h"
#include "tools/text/text_forms.h"

namespace vel::command {
namespace {

struct Column {
    const char* heading;
    std::size_t width;
    bool right = false;
};

// What varies in length stands last, so that a long text moves nothing but itself.
constexpr std::array kColumns{Column{"id", 24},     Column{"age", 6, true}, Column{"size", 10, true},
                              Column{"state", 7},   Column{"due", 6, true}, Column{"tries", 5, true},
                              Column{"channel", 8}, Column{"sender", 0},    Column{"recipient", 0},
                              Column{"reason", 0}};
using Cells = std::array<std::string, kColumns.size()>;

std::string line_of(const Cells& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const auto& [heading, width, right] = kColumns[i];
        const std::string blanks(cells[i].size() < width ? width - cells[i].size() : 0, ' ');
        line.append(i > 0 ? "  " : "").append(right ? blanks : "").append(cells[i]).append(right ? "" : blanks);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line.append("\n");
}

std::string shown(const char* text) { return visible(text_of(text)); }

std::string shown(const char* text, const char* when_empty) { return text_of(text).empty() ? when_empty : shown(text); }

// The sender of a bounce has no address (RFC 5321 section 4.5.5).
std::string sender_text(const MQEntry& entry) { return shown(entry.sender.address, "<>"); }
std::string recipient_text(const MQRecipient& recipient) { return shown(recipient.address, "-"); }

std::string age(int64_t then, int64_t now) { return duration_text((now - then) / kMicroseconds); }

std::string due_text(const MQRecipient& recipient, int64_t now) {
    if (recipient.state != MQ_WAITING) return "-";
    return recipient.due <= now ? "now" : age(now, recipient.due);
}

std::string time_text(int64_t microseconds) { return instant_text(microseconds / kMicroseconds); }

std::string state_text(const MQRecipient& recipient, int64_t now) {
    std::string text = state_name(recipient.state);
    if (recipient.state == MQ_WAITING && recipient.due > now)
        text.append(" until ").append(time_text(recipient.due)).append(" (").append(due_text(recipient, now)) += ')';
    return text;
}

std::string words(const std::vector<const char*>& names) {
    std::string text;
    for (const char* name : names) text.append(text.empty() ? "" : ", ").append(name);
    return text;
}

std::string sender_facts(const MQEntry& entry, int64_t now) {
    Facts facts;
    facts.add("id", text_of(entry.id));
    facts.add("message", text_of(entry.path));
    facts.add_shown("size", std::to_string(entry.size).append(" bytes"));
    facts.add_shown("arrival", time_text(entry.arrival).append(" (").append(age(entry.arrival, now)).append(" ago)"));
    facts.add("channel", text_of(entry.channel));
    facts.add_shown("priority", std::to_string(entry.priority));
    facts.add_shown("sender", sender_text(entry));
    facts.add("envelope id", text_of(entry.sender.envelopeId));
    facts.add("return", text_of(return_name(entry.sender.returnType)));
    facts.add("sender's text", text_of(entry.sender.text));
    facts.add("sender's channel", text_of(entry.sender.channel));
    facts.add_shown("numbers", std::to_string(entry.sender.number) + " " + std::to_string(entry.number) + " " +
                                   std::to_string(entry.number2));
    return facts.text();
}

std::string recipient_facts(const MQRecipient& recipient, int64_t now) {
    Facts facts;
    facts.add_shown("recipient", recipient_text(recipient));
    facts.add_shown("number", std::to_string(recipient.number));
    facts.add_shown("state", state_text(recipient, now));
    facts.add("reason", text_of(recipient.reason));
    facts.add_shown("attempts", std::to_string(recipient.attempts));
    facts.add("channel", text_of(recipient.channel));
    facts.add("original recipient", text_of(recipient.originalRecipient));
    facts.add_shown("notify", words(notify_names(recipient.notify)));
    facts.add("text", text_of(recipient.text));
    facts.add("text 2", text_of(recipient.text2));
    return facts.text();
}

}  // namespace

std::string list_heading() {
    Cells cells;
    for (std::size_t i = 0; i < cells.size(); ++i) cells[i] = kColumns[i].heading;
    return line_of(cells);
}

std::string list_lines(const MQEntry& entry, int64_t now) {
    std::string lines;
    for (const MQRecipient& recipient : recipients_of(entry)) {
        lines += line_of({entry.id, age(entry.arrival, now), std::to_string(entry.size), state_name(recipient.state),
                          due_text(recipient, now), std::to_string(recipient.attempts), shown(recipient.channel),
                          sender_text(entry), recipient_text(recipient), shown(recipient.reason)});
    }
    return lines;
}

std::string entry_text(const MQEntry& entry, int64_t now) {
    std::string text = sender_facts(entry, now);
    for (const MQRecipient& recipient : recipients_of(entry)) text.append("\n").append(recipient_facts(recipient, now));
    return text;
}

}  // namespace vel::command
