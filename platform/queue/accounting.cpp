#include "platform/queue/accounting.h"

#include <exception>

#include "platform/queue/report.h"

namespace vel {
namespace {

void append(std::string& line, std::string_view name, std::string_view value) {
    line.append(" ").append(name).append("=\"");
    for (const char c : value) line.append(c == '"' ? 2 : 1, c);
    line += '"';
}

std::string line_of(std::string_view event, const Entry& entry, const Recipient& recipient, std::string_view who,
                    std::string_view reason) {
    std::string line(event);
    line.append(": ").append(entry.id);
    append(line, "channel", recipient.channel);
    append(line, "recipient", recipient.address);
    line.append(" size=").append(std::to_string(entry.size));
    append(line, "who", who);
    if (!reason.empty()) append(line, "reason", reason);
    return line;
}

}  // namespace

void account_all(std::string_view event, const Entry& entry, std::string_view who, std::string_view reason) noexcept {
    try {
        for (const Recipient& recipient : entry.envelope.recipients) {
            account(line_of(event, entry, recipient, who, reason.empty() ? recipient.reason : reason));
        }
    } catch (const std::exception&) {
    }
}

}  // namespace vel
