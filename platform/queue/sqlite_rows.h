// Entries and recipients as rows.
#ifndef VEL_PLATFORM_QUEUE_SQLITE_ROWS_H
#define VEL_PLATFORM_QUEUE_SQLITE_ROWS_H

#include <optional>
#include <vector>

#include "platform/queue/driver.h"
#include "platform/sqlite/database.h"

namespace vel {

void insert(Database& database, const Entry& entry);

// An entry without its recipients.
std::optional<Entry> read_entry(Database& database, const std::string& id);

std::vector<Recipient> read_recipients(Database& database, const Selection& selection);

}  // namespace vel

#endif
