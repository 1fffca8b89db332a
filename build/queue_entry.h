// An entry of the queue while it is being made.
#ifndef VEL_BUILD_QUEUE_ENTRY_H
#define VEL_BUILD_QUEUE_ENTRY_H

#include <string>
#include <string_view>

#include "frame/owned.h"
#include "vel/envelope.h"
#include "vel/platform/queue.h"

namespace vel {

// Makes a new entry; null, with a log line, when the queue gives none.
MQContext* new_entry();

// Hands over channel and envelope. False when one of them is refused; the other one is handed over all the same.
bool address_entry(MQContext* context, const char* channel, stEnvelope& envelope);

// Owns a new entry. Unless it is committed it is given up in the end: its message goes, its lock, and the entry.
class QueueEntry {
  public:
    QueueEntry() : context_(new_entry()) {}
    QueueEntry(const QueueEntry&) = delete;
    QueueEntry& operator=(const QueueEntry&) = delete;
    ~QueueEntry();

    explicit operator bool() const { return context_ != nullptr; }
    MQContext* context() const { return context_; }

    // Asks for the entry's path; false when there is none. What follows stands on it.
    bool locate();
    const char* message_path() const { return message_path_.c_str(); }
    std::string_view short_id() const;  // the last part of the path, without its extension

    // Ends the entry: consumers see it from now on. Returns its identifier, for ReleaseQueueId; null when the queue
    // refuses it.
    COwned<char> commit();

  private:
    void give_up_files();

    MQContext* context_;
    std::string message_path_;
    std::string id_;  // the path without its extension; kept, since giving up may not need memory
};

}  // namespace vel

#endif
