#include "platform/queue/entry_view.h"

#include <utility>

namespace vel {
namespace {

MQRecipient view_of(const Recipient& recipient) {
    return {recipient.number,       recipient.state,           recipient.attempts,        recipient.notify,
            recipient.due,          recipient.channel.c_str(), recipient.address.c_str(), recipient.original.c_str(),
            recipient.text.c_str(), recipient.text2.c_str(),   recipient.reason.c_str()};
}

_envFrom view_of(const Sender& sender) {
    return {sender.address.c_str(), sender.envelope_id.c_str(), sender.return_type,
            sender.number,          sender.text.c_str(),        sender.channel.c_str()};
}

}  // namespace

EntryView::EntryView(Entry entry, std::string message_path)
    : MQEntry(), kept_(std::move(entry)), path_(std::move(message_path)) {
    for (const Recipient& recipient : kept_.envelope.recipients) views_.push_back(view_of(recipient));
    id = kept_.id.c_str();
    path = path_.c_str();
    channel = kept_.channel.c_str();
    arrival = kept_.arrival;
    size = kept_.size;
    priority = kept_.priority;
    number = kept_.envelope.number;
    number2 = kept_.envelope.number2;
    recipientCount = static_cast<int32_t>(views_.size());
    recipients = views_.data();
    sender = view_of(kept_.envelope.sender);
}

std::unique_ptr<EntryView> view_of(const Store& store, Entry entry) {
    std::string path = store.directory().message(entry.id);
    return std::make_unique<EntryView>(std::move(entry), std::move(path));
}

}  // namespace vel
