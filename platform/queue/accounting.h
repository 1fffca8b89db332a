// The lines by which an operator follows a message, at level 3:
//   queued: 0f... channel="smtp" recipient="joe@example.com" size=1234 who="smtpgate"
// A double quote in a value is doubled; the log escapes what could break a line.
#ifndef VEL_PLATFORM_QUEUE_ACCOUNTING_H
#define VEL_PLATFORM_QUEUE_ACCOUNTING_H

#include <string>
#include <string_view>

#include "platform/queue/entry.h"

namespace vel {

// A line for each recipient of the entry. Never fails: a line that memory does not suffice for is lost.
void account_all(std::string_view event, const Entry& entry, std::string_view who,
                 std::string_view reason = {}) noexcept;

}  // namespace vel

#endif
