// One who takes messages out of the queue, and what it does with those that it has claimed.
#ifndef VEL_PLATFORM_QUEUE_CONSUMER_H
#define VEL_PLATFORM_QUEUE_CONSUMER_H

#include <sys/types.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/queue/owned_file.h"
#include "platform/queue/store.h"

namespace vel {

class Consumer {
  public:
    Consumer(std::shared_ptr<Store> store, std::string who);
    Consumer(const Consumer&) = delete;
    Consumer& operator=(const Consumer&) = delete;

    Store& store() const { return *store_; }
    const std::string& who() const { return who_; }

    // What it has claimed of an entry.
    Selection claimed(const std::string& id, int32_t recipient) const;

    std::optional<Entry> claim(const std::optional<std::vector<std::string>>& channels, std::size_t limit,
                               int64_t lease);

    // Gives back what a call has claimed and cannot hand over; its lease ends it otherwise.
    void give_back(const std::string& id) noexcept;

    // Gives all claims back and leaves; throws when it cannot, and is dead none the less.
    void leave();

    // Throws in the child of a fork.
    void require_process() const;

  private:
    std::optional<Entry> claim_whole(ClaimRequest request);
    bool is_whole(const Entry& entry);
    void hold(const Entry& entry);
    void require_file() const;
    bool is_time_to_look_around();

    std::shared_ptr<Store> store_;
    std::string who_;
    pid_t process_;
    OwnedFile alive_;  // locked while it lives
    std::atomic<int64_t> looked_around_ = 0;
};

}  // namespace vel

#endif
