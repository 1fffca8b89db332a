// Delivery status notifications (RFC 3464): a text for people, the fields for programs, and the message, or its header
// block.
//
// Kept: all of the message is returned only when a recipient failed.
#include <algorithm>
#include <ctime>
#include <string>

#include "build/heading.h"
#include "build/texts.h"
#include "frame/ascii.h"
#include "frame/at_boundary.h"
#include "frame/settings.h"
#include "notify/addresses.h"
#include "notify/original.h"
#include "notify/parts.h"
#include "notify/status_fields.h"
#include "notify/submission.h"
#include "vel/notify.h"

namespace vel {
namespace {

constexpr Setting<32> kCharset{"Gateway", "LocalCharSet", "US-ASCII"};
constexpr Setting<4> kAlsoToPostmaster{"Options", "BounceToPostmaster", ""};  // Kept: three letters of it are read.

// Nothing is said of the text part, here.
constexpr Complaints kOfStatus{.no_name = "Out of memory.",
                               .no_file = nullptr,
                               .unopened = nullptr,
                               .unreadable = nullptr,
                               .unwritten = "putline failed.",
                               .unbuilt = nullptr};
constexpr Complaints kOfOriginal{.no_name = nullptr,
                                 .no_file = nullptr,
                                 .unopened = nullptr,
                                 .unreadable = "getline failed.",
                                 .unwritten = "putline failed.",
                                 .unbuilt = nullptr};

struct Report {
    const char* path;
    DSNEnvelope envelope;
    const char* subject;
    const ms* lines;
    const PerRecipChain* recipients;

    bool has_failure() const {
        for (const PerRecipChain* node = recipients; node; node = node->next) {
            if (node->record && ascii::equals_ignoring_case(or_empty(node->record->action), "failed")) return true;
        }
        return false;
    }
};

// The lock of a queued message. Who does not get it reads the message all the same.
class MessageLock {
  public:
    explicit MessageLock(const char* path) : path_(lockmsg(path) == 0 ? path : nullptr) {}
    MessageLock(const MessageLock&) = delete;
    MessageLock& operator=(const MessageLock&) = delete;
    ~MessageLock() { unlockmsg(path_); }

  private:
    const char* path_;
};

bool has_high_bytes(const ms* lines) {
    for (; lines; lines = lines->next) {
        const std::string_view line = or_empty(lines->text);
        if (std::any_of(line.begin(), line.end(), [](char c) { return (c & 0x80) != 0; })) return true;
    }
    return false;
}

Trouble add_text_part(Parts& parts, const ms* lines) {
    const OneText parameters(std::string("Charset=").append(read(kCharset).data()));
    const char* encoding = has_high_bytes(lines) ? "quoted-printable" : "7bit";
    return parts.add_text({"text", "plain", encoding, parameters.chain()},
                          [&](NewFile& file) { return unless_written(put_lines(lines, "", file)); });
}

Trouble add_status_part(Parts& parts, const Report& report) {
    return parts.add_text({"message", "delivery-status", "7bit"}, [&](NewFile& file) {
        const DSNEnvelope& envelope = report.envelope;
        return unless_written(put_status(envelope.envelopeId, envelope.arrival, report.recipients, file));
    });
}

Trouble add_original_part(Parts& parts, const Report& report) {
    const std::string message = message_file(report.path);
    if (report.envelope.returnType == VEL_RET_FULL && report.has_failure()) {
        return parts.add({"message", "rfc822", "7bit"}, message.c_str());
    }
    const MessageLock lock(report.path);
    return add_header_block(parts, message, EnvelopeLines::dropped);
}

// The envelope's recipients, whose texts are the caller's.
std::vector<_envRecip> readers(const Report& report, const std::string& the_postmaster) {
    const std::string_view sender = or_empty(report.envelope.sender);
    std::vector<_envRecip> readers;
    const bool is_nobody = sender == "<>";
    if (!sender.empty() && !is_nobody) readers.push_back(recipient_of(report.envelope.sender));
    const bool has_copy = report.has_failure() && is(read(kAlsoToPostmaster), "YES") &&
                          !ascii::equals_ignoring_case(sender, the_postmaster);
    if (is_nobody || has_copy) readers.push_back(recipient_of(the_postmaster.c_str()));
    return readers;
}

BuiltFile join(Parts& parts, const Report& report) {
    const std::string from = report_sender();
    const char* sender = or_empty(report.envelope.sender);
    const OneText to(sender), parameters("report-type=delivery-status");
    return parts.join({.from = from.c_str(), .to = *sender ? to.chain() : nullptr, .subject = report.subject}, "Report",
                      parameters.chain());
}

int send(const Report& report) {
    Parts parts;
    Trouble trouble = add_text_part(parts, report.lines);
    if (trouble != Trouble::none) return -1;
    if (report.recipients) trouble = add_status_part(parts, report);
    if (trouble != Trouble::none) return failed(kOfStatus.of(trouble));
    trouble = add_original_part(parts, report);
    if (trouble != Trouble::none) return failed(kOfOriginal.of(trouble));

    const BuiltFile message = join(parts, report);
    if (!message) return -1;
    const std::string the_postmaster = postmaster();
    const std::string queue = std::string(VELQueueDir).append("\\out");
    return submit({.sender = "<>",
                   .channel = kNoticeChannel,
                   .file = message.get(),
                   .submission = reinterpret_cast<intptr_t>(queue.c_str())},
                  readers(report, the_postmaster))
               ? 0
               : -1;
}

}  // namespace
}  // namespace vel

extern "C" {

int GenerateDSNMessage(const char* path, const DSNEnvelope* envelope, const char* subject, const ms* lines,
                       const PerRecipChain* recipients) {
    const DSNEnvelope unknown{nullptr, nullptr, 0, 0, std::time(nullptr)};
    const vel::Report report{path, envelope ? *envelope : unknown, subject, lines, recipients};
    return vel::at_boundary(-1, [&] { return vel::send(report); });
}

int GenerateDSNMessageToPostmaster(const char* path, const char* subject, const ms* lines,
                                   const PerRecipChain* recipients) {
    return vel::at_boundary(-1, [&] {
        const std::string sender = vel::postmaster();
        const DSNEnvelope envelope{sender.c_str(), "", VEL_RET_FULL, 0, std::time(nullptr)};
        return GenerateDSNMessage(path, &envelope, subject, lines, recipients);
    });
}

int GenerateDSNMessageForAllRecipients(void) { return 0; }

}  // extern "C"
