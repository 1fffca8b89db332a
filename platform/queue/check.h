// Whether tables and files agree.
#ifndef VEL_PLATFORM_QUEUE_CHECK_H
#define VEL_PLATFORM_QUEUE_CHECK_H

#include <functional>
#include <string>

#include "platform/queue/store.h"

namespace vel {

// Why an entry without its message is held.
inline constexpr const char* kDamaged = "the message file is missing or has another size";

// Whether an entry's message file is there, whole. Throws when that cannot be told.
bool is_sound(const Directory& directory, const Entry& entry);

// Tells what is wrong, with the entry's identifier, or none for the tables as a whole. Repairing holds what waits
// without its message, and reclaims.
using Finding = std::function<void(const std::string& id, const std::string& what)>;
void check(Store& store, bool repair, const Finding& tell);

}  // namespace vel

#endif
