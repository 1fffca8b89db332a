// Takes away what dead processes have left: open entries, message locks without their message, claims.
#ifndef VEL_PLATFORM_QUEUE_RECLAIM_H
#define VEL_PLATFORM_QUEUE_RECLAIM_H

#include <cstddef>
#include <string>
#include <vector>

#include "platform/queue/store.h"

namespace vel {

// Returns how many open entries there were. What is committed is never touched.
std::size_t reclaim(Store& store);

// What reclaiming would take: the message files without rows whose makers are dead; the message lock of a base path.
std::vector<std::string> abandoned(Store& store);
bool is_stale_lock(const std::string& base);

// The claims of dead consumers alone, which is cheap.
void take_back_claims(Store& store);

}  // namespace vel

#endif
