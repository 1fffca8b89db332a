// The tables of the queue's database.
#ifndef VEL_PLATFORM_QUEUE_SCHEMA_H
#define VEL_PLATFORM_QUEUE_SCHEMA_H

#include "platform/sqlite/database.h"

namespace vel {

// Makes the tables in a new database; throws when they are another program's or a later version's.
void require_schema(Database& database);

}  // namespace vel

#endif
