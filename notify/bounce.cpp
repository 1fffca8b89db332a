#include "notify/bounce.h"

#include "build/heading.h"
#include "build/texts.h"
#include "frame/at_boundary.h"
#include "notify/addresses.h"
#include "notify/original.h"
#include "notify/submission.h"

namespace vel {
namespace {

constexpr Kind kNotice{"text", "plain", "7bit"};
constexpr Kind kMessage{"message", "rfc822", "7bit"};

bool put_notice(const Bounce& bounce, const ms* reasons, NewFile& file) {
    return file.put(bounce.heading) && put_lines(reasons, kLineEnd, file) && file.put(bounce.closing);
}

}  // namespace

int send(const Bounce& bounce, const Returned& returned) {
    const BounceComplaints& complaints = bounce.complaints;
    Parts parts;
    Trouble trouble = parts.add_text(
        kNotice, [&](NewFile& file) { return unless_written(put_notice(bounce, returned.reasons, file)); });
    if (trouble != Trouble::none) return failed(complaints.part.of(trouble));
    const std::string message = message_file(returned.path);
    trouble = bounce.has_header_only ? add_header_block(parts, message, EnvelopeLines::kept)
                                     : parts.add(kMessage, message.c_str());
    if (trouble != Trouble::none) {
        return failed((bounce.has_header_only ? complaints.header_block : complaints.part).of(trouble));
    }

    const std::string from = at_boundary(std::string(), bounce_sender);
    if (from.empty()) return failed(complaints.no_sender);
    const OneText to(bounce.to);
    const BuiltFile built =
        parts.join({.from = from.c_str(), .to = to.chain(), .subject = "unable to deliver mail"}, "mixed");
    if (!built) return failed(complaints.not_joined);
    const bool is_submitted = submit(
        {.sender = from.c_str(), .channel = kNoticeChannel, .file = built.get(), .submission = returned.submission},
        {recipient_of(bounce.to.c_str())});
    return is_submitted ? 0 : failed(complaints.not_submitted);
}

}  // namespace vel
