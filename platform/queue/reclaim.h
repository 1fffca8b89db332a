// Takes away what dead processes have left: open entries, message locks without their message, claims.
#ifndef VEL_PLATFORM_QUEUE_RECLAIM_H
#define VEL_PLATFORM_QUEUE_RECLAIM_H

#include <cstddef>

#include "platform/queue/store.h"

namespace vel {

// Returns how many open entries there were. What is committed is never touched.
std::size_t reclaim(Store& store);

// The claims of dead consumers alone, which is cheap.
void take_back_claims(Store& store);

}  // namespace vel

#endif
