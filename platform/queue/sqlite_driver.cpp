#include "platform/queue/sqlite_driver.h"

#include <unistd.h>

#include "platform/queue/report.h"
#include "platform/queue/schema.h"
#include "platform/queue/sqlite_rows.h"

namespace vel {

SqliteDriver::SqliteDriver(std::string path) : path_(std::move(path)) { database(); }

Database& SqliteDriver::database() {
    if (process_ != ::getpid()) {
        // Closing it here would give up the parent's locks on the file, or its memory.
        static_cast<void>(database_.release());
    } else if (database_ && database_->busy()) {
        database_.reset();  // A transaction that could not be undone ends with its connection.
    }
    if (!database_) {
        auto fresh = std::make_unique<Database>(path_);
        require_schema(*fresh);
        database_ = std::move(fresh);
        process_ = ::getpid();
    }
    return *database_;
}

void SqliteDriver::commit(std::span<const Entry* const> entries) {
    Database& db = database();
    Transaction transaction(db);
    for (const Entry* entry : entries) insert(db, *entry);
    transaction.commit();
}

bool SqliteDriver::has(const std::string& id) {
    Query query = database().query("SELECT 1 FROM entry WHERE id = ?");
    query << id;
    return query.next();
}

// What a failed COMMIT has left in the write-ahead log would be valid after a crash. Another transaction is written
// over it.
void SqliteDriver::seal() {
    Database& db = database();
    Transaction transaction(db);
    db.query("UPDATE seal SET count = count + 1").run();
    transaction.commit();
}

std::optional<Entry> SqliteDriver::read(const std::string& id) {
    auto entry = read_entry(database(), id);
    if (entry) entry->envelope.recipients = read_recipients(database(), Selection{id});
    return entry;
}

std::vector<Entry> SqliteDriver::list(const ListFilter& filter, std::size_t limit) {
    Database& db = database();
    const std::string channel = filter.channel.value_or("");
    std::vector<std::string> ids;
    {
        Query row = db.query(
            "SELECT DISTINCT entry FROM recipient WHERE entry > ?1 AND (state & ?2) != 0 AND (?3 OR channel = ?4)"
            " ORDER BY entry LIMIT ?5");
        row << filter.after << filter.states << !filter.channel << channel << static_cast<int64_t>(limit);
        while (row.next()) row >> ids.emplace_back();
    }
    std::vector<Entry> entries;
    for (const std::string& id : ids) {
        auto entry = read_entry(db, id);
        if (!entry) continue;
        entry->envelope.recipients = read_recipients(db, Selection{id, MQ_ALL, filter.states, {}});
        entries.push_back(std::move(*entry));
    }
    return entries;
}

std::vector<Count> SqliteDriver::count() {
    Query row = database().query(
        "SELECT recipient.channel, recipient.state, count(*), min(arrival) FROM recipient"
        " JOIN entry ON entry.id = recipient.entry GROUP BY 1, 2 ORDER BY 1, 2");
    std::vector<Count> counts;
    while (row.next()) {
        Count& count = counts.emplace_back();
        row >> count.channel >> count.state >> count.recipients >> count.oldest;
    }
    return counts;
}

std::vector<std::string> SqliteDriver::faults() {
    std::vector<std::string> faults;
    Query row = database().query("PRAGMA quick_check");
    while (row.next()) row >> faults.emplace_back();
    if (faults == std::vector<std::string>{"ok"}) faults.clear();
    return faults;
}

}  // namespace vel
