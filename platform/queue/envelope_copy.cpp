#include "platform/queue/entry.h"
#include "platform/queue/report.h"

namespace vel {
namespace {

std::string text_of(const char* text) { return text ? text : ""; }

Sender copy_of(const _envFrom& from) {
    return {text_of(from.address), text_of(from.envelopeId), from.returnType,
            from.number,           text_of(from.text),       text_of(from.channel)};
}

Recipient copy_of(const _envRecip& from, int32_t number) {
    Recipient to;
    to.number = number;
    to.address = text_of(from.address);
    to.original = text_of(from.originalRecipient);
    to.notify = from.notify;
    to.text = text_of(from.text);
    to.text2 = text_of(from.text2);
    return to;
}

}  // namespace

Envelope copy_of(stEnvelope& envelope) {
    envelope.senders.Reset();
    envelope.recipients.Reset();
    const _envFrom* const sender = envelope.senders.Next();
    if (!sender || envelope.senders.Next()) throw QueueError("an envelope has one sender");
    Envelope copy{envelope.number, envelope.number2, copy_of(*sender), {}};
    while (const _envRecip* const recipient = envelope.recipients.Next()) {
        copy.recipients.push_back(copy_of(*recipient, static_cast<int32_t>(copy.recipients.size())));
    }
    return copy;
}

}  // namespace vel
