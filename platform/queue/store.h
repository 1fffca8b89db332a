// A queue directory that this process is connected to: its files, and the engine that keeps its tables.
#ifndef VEL_PLATFORM_QUEUE_STORE_H
#define VEL_PLATFORM_QUEUE_STORE_H

#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "platform/queue/directory.h"
#include "platform/queue/driver.h"
#include "platform/queue/group_commit.h"
#include "platform/queue/process_locks.h"

namespace vel {

class Store {
  public:
    explicit Store(std::string path);

    const Directory& directory() const { return directory_; }

    // Runs body(driver) while no other thread uses a driver.
    template <class Body>
    auto ask(Body&& body) {
        const std::lock_guard lock(driver_lock());
        return std::forward<Body>(body)(*driver_);
    }

    // Adds an entry whose file is on disk. Throws when it is not in the queue.
    void commit(const Entry& entry) { commits_.commit(*driver_, entry); }

  private:
    Directory directory_;
    std::unique_ptr<Driver> driver_;
    GroupCommit commits_;
};

// Connects the process to the queue of the settings; a queue that it is connected to already stays.
void connect();
// The queue that the process is connected to; throws when there is none.
std::shared_ptr<Store> connected();

}  // namespace vel

#endif
