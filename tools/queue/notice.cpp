#include "tools/queue/notice.h"

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <string_view>
#include <vector>

#include "tools/compose/text_chain.h"
#include "tools/io/journal.h"
#include "tools/queue/connection.h"
#include "tools/queue/entries.h"
#include "tools/text/hex_escapes.h"
#include "vel/notify.h"

namespace vel::command {
namespace {

constexpr std::string_view kNobody = "<>";
constexpr std::string_view kNoticeChannel = "DSN";
constexpr std::string_view kSuffix = ".msg";
constexpr std::size_t kLongestText = 900;  // a line has 998, with what stands before it (RFC 5322 section 2.1.1)

// How news are told, and to whom.
struct Wording {
    Fate fate;
    int32_t wish;
    const char* action;
    const char* subject;
    const char* heading;
};
constexpr std::array kWordings{
    Wording{Fate::delivered, VEL_NOTIFY_SUCCESS, "delivered", "mail delivered", "Your message has been delivered to:"},
    Wording{Fate::relayed, VEL_NOTIFY_SUCCESS, "relayed", "mail relayed",
            "Your message has been passed on, to where its delivery may not be reported, for:"},
    Wording{Fate::delayed, VEL_NOTIFY_DELAY, "delayed", "mail delayed",
            "Your message is late, but its delivery is still being tried, to:"},
    Wording{Fate::permanent_failure, VEL_NOTIFY_FAILURE, "failed", "unable to deliver mail",
            "Your message could not be delivered to:"},
};

const Wording& wording_of(Fate fate) {
    return *std::find_if(kWordings.begin(), kWordings.end(), [=](const Wording& row) { return row.fate == fate; });
}

using Recipients = std::vector<const MQRecipient*>;

Recipients those_who_wish(const MQEntry& entry, int32_t wish) {
    Recipients wishing;
    for (const MQRecipient& recipient : recipients_of(entry)) {
        const int32_t wishes = recipient.notify ? recipient.notify : VEL_NOTIFY_FAILURE;
        if (!(wishes & VEL_NOTIFY_NEVER) && (wishes & wish)) wishing.push_back(&recipient);
    }
    return wishing;
}

bool asks_for_reports(const _envFrom& sender, const Recipients& recipients) {
    return *sender.envelopeId || sender.returnType != 0 ||
           std::any_of(recipients.begin(), recipients.end(),
                       [](const MQRecipient* recipient) { return recipient->notify || *recipient->originalRecipient; });
}

// What a mailer has said may be anything; a notice takes lines of ASCII.
std::string line_of(std::string_view text) {
    std::string line(text.substr(0, kLongestText));
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return line;
}

// Of ENVID and ORCPT a report has what the sender has put into xtext (RFC 3461 section 4).
std::string without_xtext(const char* text) { return line_of(without_hex_escapes(text, '+')); }

// Addresses, each with the reason.
std::vector<std::string> lines_about(const Recipients& recipients, const News& news) {
    std::vector<std::string> lines;
    for (const MQRecipient* recipient : recipients) {
        lines.push_back(std::string("  ").append(line_of(recipient->address)));
        if (!news.reason.empty()) lines.push_back(std::string("    ").append(line_of(news.reason)));
    }
    lines.emplace_back();
    return lines;
}

struct StatusField : PerRecipField {
    StatusField() : PerRecipField{} {}
    StatusField(const StatusField&) = delete;
    StatusField& operator=(const StatusField&) = delete;
    ~StatusField() { CleanPerRecipField(this); }
};

int32_t time_field(int64_t seconds) {
    return static_cast<int32_t>(std::min<int64_t>(seconds, std::numeric_limits<int32_t>::max()));
}

void fill(StatusField& field, const MQRecipient& recipient, const char* action, const News& news) {
    const std::string original = without_xtext(recipient.originalRecipient);
    const std::string address = line_of(recipient.address), reason = line_of(news.reason);
    const int32_t now = time_field(now_in_microseconds() / kMicroseconds), end = time_field(news.retry_until);
    if (AssignPerRecipField(&field, original.c_str(), address.c_str(), action, news.status.c_str(), "", reason.c_str(),
                            now, end) != 0)
        throw std::bad_alloc();
}

class StatusFields {
  public:
    StatusFields(const Recipients& recipients, const char* action, const News& news)
        : fields_(recipients.size()), nodes_(recipients.size()) {
        for (std::size_t i = 0; i < nodes_.size(); ++i) {
            fill(fields_[i], *recipients[i], action, news);
            nodes_[i] = {&fields_[i], i + 1 < nodes_.size() ? &nodes_[i + 1] : nullptr};
        }
    }
    const PerRecipChain* get() const { return nodes_.data(); }

  private:
    std::vector<StatusField> fields_;
    std::vector<PerRecipChain> nodes_;
};

std::string base_of(const MQEntry& entry) {
    std::string_view path = entry.path;
    if (path.ends_with(kSuffix)) path.remove_suffix(kSuffix.size());
    return std::string(path);
}

// Both of these return 0 when the queue has taken the notice.

int report(const MQEntry& entry, const Recipients& recipients, const Wording& wording, const News& news) {
    const std::string envelope_id = without_xtext(entry.sender.envelopeId);
    const DSNEnvelope envelope{entry.sender.address, envelope_id.c_str(), entry.sender.returnType, 0,
                               static_cast<std::time_t>(entry.arrival / kMicroseconds)};
    std::vector<std::string> lines = lines_about(recipients, news);
    lines.insert(lines.begin(), {wording.heading, ""});
    for (std::string& line : lines) line.append("\r\n");
    const StatusFields fields(recipients, wording.action, news);
    return GenerateDSNMessage(base_of(entry).c_str(), &envelope, wording.subject, TextChain(std::move(lines)).get(),
                              fields.get());
}

int bounce(const MQEntry& entry, const Recipients& recipients, const News& news) {
    const TextChain reasons(lines_about(recipients, news));
    return BounceMimeMessage(base_of(entry).c_str(), &entry.sender, reasons.get(), 0, nullptr);
}

}  // namespace

bool has_reader(const MQEntry& entry) {
    const std::string_view sender = entry.sender.address;
    const bool is_line = std::none_of(sender.begin(), sender.end(), [](unsigned char c) { return c < ' '; });
    return !sender.empty() && sender != kNobody && is_line && entry.channel != kNoticeChannel;
}

void tell_sender(const MQEntry& entry, const News& news) {
    const Wording& wording = wording_of(news.fate);
    const Recipients recipients = those_who_wish(entry, wording.wish);
    if (recipients.empty()) return;
    Journal journal;
    journal.share();
    const bool is_report = asks_for_reports(entry.sender, recipients);
    const int result = is_report ? report(entry, recipients, wording, news) : bounce(entry, recipients, news);
    if (result != 0) throw queue_failure(journal, "the sender has not been told", Exit::temporary);
}

}  // namespace vel::command
