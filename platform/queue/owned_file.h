// Files whose maker can be seen to live: it holds a flock on them, which the kernel gives up when it dies.
#ifndef VEL_PLATFORM_QUEUE_OWNED_FILE_H
#define VEL_PLATFORM_QUEUE_OWNED_FILE_H

#include <string>

#include "frame/owned.h"

namespace vel {

// Whether a path still leads to the file that a descriptor is open on.
bool leads_to(const std::string& path, int fd);

// Makes a new, empty file and locks it. Nothing when the name is taken, or somebody took the file for a dead one's in
// between: another name will do. Throws when it cannot be made.
Descriptor make_owned(const std::string& path);

// Locks a file whose owner is dead; nothing when it lives or there is no such file.
Descriptor take_ownerless(const std::string& path);

}  // namespace vel

#endif
