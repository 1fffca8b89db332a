// The queue's locks, which are the process's, so that a fork finds them all free in the child.
#ifndef VEL_PLATFORM_QUEUE_PROCESS_LOCKS_H
#define VEL_PLATFORM_QUEUE_PROCESS_LOCKS_H

#include <mutex>

namespace vel {

// They are taken in this order; nothing is called back, and no file is synced, under the last two.
std::mutex& driver_lock();    // every driver: one statement of the process runs at a time
std::mutex& pending_lock();   // the entries that wait to be committed together
std::mutex& registry_lock();  // the open entries, the connected store, the module's name

// From now on fork() waits until the locks are free, and they are in the child. May be called again.
void guard_locks_at_fork();

}  // namespace vel

#endif
