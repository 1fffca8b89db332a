// The body of a message/delivery-status part (RFC 3464 section 2.1).
#ifndef VEL_NOTIFY_STATUS_FIELDS_H
#define VEL_NOTIFY_STATUS_FIELDS_H

#include <ctime>

#include "frame/new_file.h"
#include "vel/notify.h"

namespace vel {

// Writes the fields of the message and those of each recipient, a block each.
bool put_status(const char* envelope_id, std::time_t arrival, const PerRecipChain* recipients, NewFile& file);

}  // namespace vel

#endif
