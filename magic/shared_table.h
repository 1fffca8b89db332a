// The one open table that the maintenance calls share, and its mutex.
#ifndef VEL_MAGIC_SHARED_TABLE_H
#define VEL_MAGIC_SHARED_TABLE_H

#include "magic/table.h"

namespace vel {

// The mutex, for the length of a block. It is taken before the relation's lock.
class SharedTableHeld {
  public:
    SharedTableHeld();
    SharedTableHeld(const SharedTableHeld&) = delete;
    SharedTableHeld& operator=(const SharedTableHeld&) = delete;
    ~SharedTableHeld();

    // Null when it is not open.
    magicdb* table() const;
};

}  // namespace vel

#endif
