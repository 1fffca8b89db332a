#include "build/queue_entry.h"

#include <cstdio>
#include <utility>

#include "frame/log.h"
#include "vel/frame.h"

namespace vel {
namespace {

constexpr const char* kMessage = ".msg";
constexpr std::size_t kExtensionSize = 4;
constexpr int kPriority = 255;

}  // namespace

MQContext* new_entry() {
    MQContext* context = CreateMQEntry();
    if (!context) log_text(kLogError, "CreateMQEntry failed.");
    return context;
}

bool address_entry(MQContext* context, const char* channel, stEnvelope& envelope) {
    const bool has_channel = InsertMQChannel(context, channel, kPriority);
    return PutMQEnvelope(context, &envelope) && has_channel;
}

QueueEntry::~QueueEntry() {
    if (!context_) return;
    give_up_files();
    DiscardMQEntry(context_);
}

bool QueueEntry::locate() {
    const char* path = GetMQPathName(context_, kMessage);
    if (!path) return false;
    message_path_ = path;
    if (message_path_.size() <= kExtensionSize) return false;
    id_ = message_path_.substr(0, message_path_.size() - kExtensionSize);
    return true;
}

std::string_view QueueEntry::short_id() const { return std::string_view(id_).substr(id_.rfind('/') + 1); }

COwned<char> QueueEntry::commit() {
    COwned<char> identifier = copy_text(id_);  // Before there is anything that could be lost.
    if (CloseMQEntry(std::exchange(context_, nullptr))) return identifier;
    give_up_files();
    return nullptr;
}

void QueueEntry::give_up_files() {
    if (id_.empty()) return;
    std::remove(message_path());
    unlockmsg(id_.c_str());
}

}  // namespace vel
