// An entry that is being made: its files exist, its rows do not.
#ifndef VEL_PLATFORM_QUEUE_OPEN_ENTRY_H
#define VEL_PLATFORM_QUEUE_OPEN_ENTRY_H

#include <sys/types.h>

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/queue/owned_file.h"
#include "platform/queue/store.h"

namespace vel {

class OpenEntry {
  public:
    // Makes the files of a new entry, the message empty. Throws, and leaves nothing behind, when it cannot.
    explicit OpenEntry(std::shared_ptr<Store> store);

    // The child of a fork has its parent's entries, which are none of its own.
    bool is_ours() const;

    // A text that lives as long as the entry does.
    const char* path(std::string_view extension);
    void set_channel(std::string channel, int priority);
    void set_envelope(Envelope envelope) { envelope_ = std::move(envelope); }

    // Puts the entry into the queue, and says so in the log. Throws when it is not there; its files are gone then.
    void close();
    // Removes the files; false when one of them stays.
    bool discard() noexcept { return remove_files(base_); }

  private:
    void make_lock() const;
    Entry complete() const;
    int64_t sync_message() const;

    std::shared_ptr<Store> store_;
    pid_t process_;
    OwnedFile message_;  // locked while the entry is open
    std::string base_;
    std::deque<std::string> paths_;
    std::string channel_;
    int32_t priority_ = 0;
    std::optional<Envelope> envelope_;
};

}  // namespace vel

#endif
