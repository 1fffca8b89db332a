#include "platform/queue/schema.h"

#include "platform/queue/report.h"
#include "vel/platform/queue.h"

namespace vel {
namespace {

constexpr int64_t kApplication = 0x56514d31;
constexpr int64_t kVersion = 1;

// A commit is on disk when it returns; a log that a slow reader has let grow is cut again.
constexpr const char* kSettings =
    "PRAGMA synchronous = FULL;"
    "PRAGMA journal_size_limit = 16777216;";

// Times are microseconds since 1970, those of leases since the machine was started. States are those of the
// interface. The empty text is no consumer.
constexpr const char* kTables = R"(
    CREATE TABLE entry (
        id TEXT PRIMARY KEY, channel TEXT NOT NULL, priority INTEGER NOT NULL,
        arrival INTEGER NOT NULL, size INTEGER NOT NULL,
        number INTEGER NOT NULL, number2 INTEGER NOT NULL,
        sender TEXT NOT NULL, envelope_id TEXT NOT NULL, return_type INTEGER NOT NULL,
        sender_number INTEGER NOT NULL, sender_text TEXT NOT NULL, sender_channel TEXT NOT NULL
    ) WITHOUT ROWID;
    CREATE TABLE recipient (
        entry TEXT NOT NULL, number INTEGER NOT NULL, channel TEXT NOT NULL,
        address TEXT NOT NULL, original TEXT NOT NULL, notify INTEGER NOT NULL,
        text TEXT NOT NULL, text2 TEXT NOT NULL,
        state INTEGER NOT NULL, due INTEGER NOT NULL, deferred INTEGER NOT NULL,
        attempts INTEGER NOT NULL, reason TEXT NOT NULL,
        consumer TEXT NOT NULL, lease_until INTEGER NOT NULL,
        PRIMARY KEY (entry, number)
    ) WITHOUT ROWID;
    CREATE INDEX recipient_by_channel ON recipient (channel, deferred, due, entry) WHERE state = 1;
    CREATE INDEX recipient_by_due ON recipient (deferred, due, entry) WHERE state = 1;
    CREATE INDEX recipient_by_entry ON recipient (entry, deferred, due) WHERE state = 1;
    CREATE INDEX recipient_by_consumer ON recipient (consumer, entry, number) WHERE state = 2;
    CREATE INDEX recipient_by_lease ON recipient (lease_until) WHERE state = 2;
    CREATE TABLE seal (count INTEGER NOT NULL);
    INSERT INTO seal VALUES (0);
    PRAGMA application_id = 0x56514d31;
    PRAGMA user_version = 1;
)";
static_assert(MQ_WAITING == 1 && MQ_CLAIMED == 2, "as the indexes have it");

// Two processes may meet a new database at once.
void make_tables(Database& database) {
    Transaction transaction(database);
    if (database.number("PRAGMA application_id") == 0 && database.number("SELECT count(*) FROM sqlite_schema") == 0) {
        database.execute(kTables);
    }
    transaction.commit();
}

}  // namespace

void require_schema(Database& database) {
    if (database.number("PRAGMA application_id") == 0) make_tables(database);
    if (database.number("PRAGMA application_id") != kApplication) {
        throw QueueError("queue.db is not a queue's database");
    }
    if (database.number("PRAGMA user_version") != kVersion) throw QueueError("queue.db is of another version");
    if (database.text("PRAGMA journal_mode = WAL") != "wal") throw QueueError("queue.db cannot have a write-ahead log");
    database.execute(kSettings);
}

}  // namespace vel
