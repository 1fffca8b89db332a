// The lock of a relation: a flock on a file of its own. Closing any descriptor of a database's file would give up the
// locks that SQLite holds on it in this process.
#ifndef VEL_PLATFORM_DIAMOND_RELATION_LOCK_H
#define VEL_PLATFORM_DIAMOND_RELATION_LOCK_H

#include <string>

#include "frame/owned.h"
#include "platform/this_process.h"

namespace vel {

class RelationLock {
  public:
    // Waits for it. Throws Failure when there is no lock to be had.
    explicit RelationLock(const std::string& path);
    RelationLock(const RelationLock&) = delete;
    RelationLock& operator=(const RelationLock&) = delete;
    ~RelationLock();

    // Whether it was inherited by a fork: then it is the parent's.
    bool is_inherited() const;

  private:
    Descriptor file_;
    const int process_ = this_process();
};

}  // namespace vel

#endif
