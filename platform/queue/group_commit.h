// Entries that several threads close at once share a transaction, and so its sync.
#ifndef VEL_PLATFORM_QUEUE_GROUP_COMMIT_H
#define VEL_PLATFORM_QUEUE_GROUP_COMMIT_H

#include <sys/types.h>

#include <exception>
#include <vector>

#include "platform/queue/driver.h"

namespace vel {

class GroupCommit {
  public:
    // Returns when the entry is in the queue; throws when it is not, CommitInDoubt when nobody can tell. Whoever gets
    // the driver's lock first commits for all that wait.
    void commit(Driver& driver, const Entry& entry);

  private:
    struct Waiting {
        const Entry* entry;
        bool done = false;
        std::exception_ptr failure;
    };
    // The child of a fork inherits the list, but not the threads that wait.
    struct Place {
        pid_t process;
        Waiting* waiting;
    };

    std::vector<Place> take_pending() noexcept;
    static void commit_all(Driver& driver, const std::vector<Place>& group) noexcept;
    // In doubt: a COMMIT has failed, and nothing been written over it yet.
    static bool commit_together(Driver& driver, const std::vector<Place>& group, bool& in_doubt) noexcept;
    static void commit_alone(Driver& driver, Waiting& waiting, bool& in_doubt) noexcept;

    std::vector<Place> pending_;
};

}  // namespace vel

#endif
