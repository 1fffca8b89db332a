// Files whose maker can be seen to live: it holds a flock on them, which the kernel gives up when it dies.
#ifndef VEL_PLATFORM_QUEUE_OWNED_FILE_H
#define VEL_PLATFORM_QUEUE_OWNED_FILE_H

#include <functional>
#include <string>

#include "frame/owned.h"

namespace vel {

// Whether a path still leads to the file that a descriptor is open on.
bool leads_to(const std::string& path, int fd);

struct OwnedFile {
    std::string id;
    std::string path;
    Descriptor lock;
};

// Makes a new, empty file, whose path goes by a new identifier, and locks it. Throws, and leaves nothing behind, when it
// cannot.
OwnedFile make_owned(const std::function<std::string(const std::string& id)>& path_of);

// Locks a file whose owner is dead; nothing when it lives or there is no such file.
Descriptor take_ownerless(const std::string& path);

}  // namespace vel

#endif
