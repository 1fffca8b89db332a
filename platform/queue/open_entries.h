// The open entries of the process, by the contexts that callers have of them. A context is a number that is never
// given twice, not an address: one that is out of date finds nothing.
#ifndef VEL_PLATFORM_QUEUE_OPEN_ENTRIES_H
#define VEL_PLATFORM_QUEUE_OPEN_ENTRIES_H

#include <memory>

#include "platform/queue/open_entry.h"
#include "vel/platform/queue.h"

namespace vel {

// Removes the entry's files when there is no memory for a context.
MQContext* remember(std::unique_ptr<OpenEntry> entry);

// The entry of a context; throws when it has none in this process.
OpenEntry& open_entry(MQContext* context);

// The same, and the context has none any more.
std::unique_ptr<OpenEntry> take_open_entry(MQContext* context);

}  // namespace vel

#endif
