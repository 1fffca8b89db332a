#include "build/envelope.h"

#include <new>

#include "build/texts.h"

namespace vel {
namespace {

template <class T>
void add(cList<T*>& list, T& item) {
    if (!list.Add(&item)) throw std::bad_alloc();
}

}  // namespace

void Envelope::set_sender(const _envFrom& sender) {
    sender_ = {.address = or_empty(sender.address),
               .envelopeId = or_empty(sender.envelopeId),
               .returnType = sender.returnType,
               .number = sender.number,
               .text = or_empty(sender.text),
               .channel = or_empty(sender.channel)};
    add(record_.senders, sender_);
}

void Envelope::add_recipient(const _envRecip& recipient) {
    _envRecip& stored = recipients_.emplace_back(_envRecip{.address = or_empty(recipient.address),
                                                           .originalRecipient = or_empty(recipient.originalRecipient),
                                                           .notify = recipient.notify,
                                                           .text = or_empty(recipient.text),
                                                           .text2 = or_empty(recipient.text2)});
    add(record_.recipients, stored);
}

}  // namespace vel
