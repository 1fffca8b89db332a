// Envelope and commit for an entry whose message the caller has written.
#include "build/envelope.h"
#include "build/queue_entry.h"
#include "build/texts.h"
#include "frame/at_boundary.h"
#include "frame/log.h"
#include "vel/build.h"

namespace vel {
namespace {

// Kept: operators know the two apart by the full stop.
constexpr const char* kNoMemoryForSender = "Out of memory";
constexpr const char* kNoMemoryForRecipient = "Out of memory.";

// Runs a step that makes records; false, with a log line, without memory.
template <class Step>
bool with_memory(const char* message, Step step) {
    return at_boundary(
        false, [=] { log_text(kLogError, message); },
        [&] {
            step();
            return true;
        });
}

void set_sender(Envelope& envelope, _envFrom sender, const char* channel) {
    sender.channel = channel;
    envelope.set_sender(sender);
}

void add_recipients(Envelope& envelope, const EnvRecipChain* chain) {
    for (; chain; chain = chain->next) {
        if (!chain->record) continue;
        _envRecip recipient = *chain->record;
        recipient.text2 = nullptr;
        envelope.add_recipient(recipient);
    }
}

}  // namespace
}  // namespace vel

extern "C" int SubmitMQMessage(MQContext* context, const _envFrom* sender, const EnvRecipChain* recipients,
                               const char* channel) {
    if (!context) vel::log_text(vel::kLogError, "CreateMQEntry failed.");
    if (!context || !sender) return 0;
    vel::Envelope envelope;
    if (!vel::with_memory(vel::kNoMemoryForSender, [&] { vel::set_sender(envelope, *sender, channel); })) return 0;
    if (!vel::with_memory(vel::kNoMemoryForRecipient, [&] { vel::add_recipients(envelope, recipients); })) return 0;
    if (vel::address_entry(context, vel::or_empty(channel), envelope.record())) return CloseMQEntry(context);
    DiscardMQEntry(context);
    return 0;
}
