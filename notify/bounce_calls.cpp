// Who gets a message back that cannot be delivered: its sender, the postmaster, or nobody.
//
// Kept: two settings whose names differ in the case of one letter: "BounceToPostmaster" is about messages from "<>",
// "bounceToPostmaster" about a copy of the bounces to all others.
#include <sys/stat.h>

#include <memory>

#include "build/texts.h"
#include "frame/at_boundary.h"
#include "frame/log.h"
#include "frame/settings.h"
#include "notify/addresses.h"
#include "notify/bounce.h"
#include "notify/original.h"
#include "vel/notify.h"

namespace vel {
namespace {

constexpr Setting<8> kInsteadOfNobody{"Options", "BounceToPostmaster", "NO"};
constexpr Setting<8> kCopy{"Options", "bounceToPostmaster", "NO"};

constexpr const char* kNobody = "<>";

constexpr BounceComplaints kToSender{
    .no_memory = "BounceMimeMessage failed: out of memory.",
    .no_sender = "BounceMimeMessage failed: out of memory.",
    .part = {.no_name = "BounceMimeMessage failed: out of memory.",
             .no_file = "BounceMimeMessage failed: filecreate error.",
             .unopened = nullptr,
             .unreadable = nullptr,
             .unwritten = "BounceMimeMessage failed: putline failed.",
             .unbuilt = "BounceMimeMessage failed: MimeBuildMessage failed."},
    .header_block = {.no_name = "BounceMimeMessage failed: out of memory.",
                     .no_file = "BounceMimeMessage failed: filecreate error.",
                     .unopened = "BounceMimeMessage failed: fileopen failed.",
                     .unreadable = nullptr,
                     .unwritten = "BounceMimeMessage failed: out of memory.",  // Kept: as it has always been told.
                     .unbuilt = "BounceMimeMessage failed: MimeBuildMessage failed."},
    .not_joined = "BounceMimeMessage failed: MimeBuldMultipartMessage failed.",
    .not_submitted = "BounceMimeMessage failed: MimeSendMessage failed.",
};

constexpr BounceComplaints kToPostmaster{
    .no_memory = "BounceMimeMessageToPostmaster failed. out of memory.",
    .no_sender = "BounceMimeMessageToPostmaster failed: out of memory.",
    .part = {.no_name = "BounceMimeMessageToPostmaster failed. out of memory.",
             .no_file = "BounceMimeMessageToPostmaster failed. filecreate failed.",
             .unopened = nullptr,
             .unreadable = nullptr,
             .unwritten = "BounceMimeMessageToPostmaster failed. putline failed.",
             .unbuilt = "BounceMimeMessageToPostmaster failed. MimeBuildMessage failed."},
    .header_block = {},
    .not_joined = "BounceMimeMessageToPostmaster failed. MimeBuildMultipartMessage failed.",
    .not_submitted = "BounceMimeMessageToPostmaster failed. MimeSendMessage failed, message cannot be submitted to MQ.",
};

Bounce to_sender(std::string sender, bool is_missing, bool has_header_only) {
    return {.to = std::move(sender),
            .heading = is_missing ? "This message has no sender in the envelope.\r\n"
                                    "It was being returned to sender for the following reasons:\r\n\r\n"
                                  : "This message was returned to you for the following reasons:\r\n\r\n",
            .closing = has_header_only ? "The original message header follows.\r\n\r\n"
                                       : "The original message follows.\r\n\r\n",
            .has_header_only = has_header_only,
            .complaints = kToSender};
}

Bounce to_postmaster() {
    return {.to = postmaster(),
            .heading = "This message has been bounced to postmaster for the following reason(s):\r\n\r\n",
            .closing = "\r\nThe original message follows.\r\n\r\n",
            .has_header_only = false,
            .complaints = kToPostmaster};
}

// Nothing of the size's line keeps a message from being returned, nor does memory that is short.
long size_of(const char* path) {
    struct stat status {};
    const auto found = [&] { return ::stat(message_file(path).c_str(), &status) == 0; };
    if (at_boundary(false, found)) return static_cast<long>(status.st_size);
    log_text(kLogError, "Could not get message file size.");
    return 0;
}

// Whatever becomes of it, the message counts as returned.
void bounce_to_postmaster(const Returned& returned, void* queue) {
    BounceMimeMessageToPostmaster(returned.path, returned.reasons, returned.submission, queue);
    const long size = size_of(returned.path);
    log_line(kLogAccount, "Bounced %s size: %ld bytes to: <postmaster>\r\n", last_part(returned.path), size);
}

// The sender in the envelope; empty when there is none.
std::string envelope_sender_of(const char* path, const _envFrom* given, void* queue) {
    if (given) return or_empty(given->address);
    const std::unique_ptr<_envFrom, decltype(&FreeEnvFrom)> fetched(GetEnvelopeFrom(path, queue), FreeEnvFrom);
    return fetched ? or_empty(fetched->address) : "";
}

// Returns 1 when the postmaster got the message. Kept: of the header's call that is the result in any case, and the
// message is said to be discarded all the same.
int return_to_nobody(const Returned& returned, bool has_header_only, void* queue) {
    const bool has_postmaster = is(read(kInsteadOfNobody), "YES");
    if (has_postmaster) bounce_to_postmaster(returned, queue);
    if (!has_postmaster || has_header_only) {
        log_text(kLogNotice, "Discard to bounce message with empty envelope From ( <> ).");
    }
    return has_postmaster || has_header_only ? 1 : 2;
}

int return_to_sender(const Returned& returned, const _envFrom* given, bool has_header_only, void* queue) {
    std::string sender = envelope_sender_of(returned.path, given, queue);
    const bool is_missing = sender.empty();
    if (is_missing) {
        log_text(kLogError, "Waring: trying to bonce message with no envelope from.");
        sender = postmaster().append(" (envelope From missing)");
    }
    if (sender == kNobody) return return_to_nobody(returned, has_header_only, queue);
    const bool has_copy_reader = is_somebody_else(sender);
    if (send(to_sender(std::move(sender), is_missing, has_header_only), returned) != 0) return -1;
    if (has_copy_reader && is(read(kCopy), "YES")) bounce_to_postmaster(returned, queue);
    return 0;
}

template <class Body>
int bounced(const BounceComplaints& complaints, Body body) {
    return at_boundary(
        -1, [&] { failed(complaints.no_memory); }, body);
}

}  // namespace
}  // namespace vel

extern "C" {

int BounceMimeMessage(const char* path, const _envFrom* sender, const ms* reasons, intptr_t submission, void* queue) {
    return vel::bounced(vel::kToSender, [&] {
        return vel::return_to_sender({path, reasons, submission}, sender, false, queue);
    });
}

int BounceMimeMessageHeader(const char* path, const ms* reasons, intptr_t submission, void* queue) {
    return vel::bounced(vel::kToSender, [&] {
        return vel::return_to_sender({path, reasons, submission}, nullptr, true, queue);
    });
}

int BounceMimeMessageToPostmaster(const char* path, const ms* reasons, intptr_t submission, void*) {
    return vel::bounced(vel::kToPostmaster, [&] {
        return vel::send(vel::to_postmaster(), {path, reasons, submission});
    });
}

}  // extern "C"
