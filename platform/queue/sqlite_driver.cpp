#include "platform/queue/sqlite_driver.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "frame/owned.h"
#include "platform/queue/report.h"
#include "platform/queue/schema.h"
#include "platform/queue/sqlite_rows.h"

namespace vel {
namespace {

// The group may write it, as the message files; SQLite gives its other files the same mode.
constexpr mode_t kFileMode = 0660;

// So many recipients make a page of a list.
constexpr std::size_t kMany = 10'000;

// Closing a database's file gives up the process's locks on it: a new one has none.
void make_file(const std::string& path) {
    const Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode));
    if (!file && errno != EEXIST) throw QueueError::of_system("cannot make", path);
}

}  // namespace

SqliteDriver::SqliteDriver(std::string path) : path_(std::move(path)) {
    make_file(path_);
    database();
}

SqliteDriver::~SqliteDriver() { forget_parents(); }

// Closing it here would give up the parent's locks on the file, or its memory.
void SqliteDriver::forget_parents() {
    if (process_ != ::getpid()) static_cast<void>(database_.release());
}

// A transaction that could not be undone ends with its connection. What goes to a file that has lost its name is lost.
Database& SqliteDriver::database() {
    forget_parents();
    if (database_ && (database_->busy() || database_->has_moved())) database_.reset();
    if (!database_) {
        auto fresh = std::make_unique<Database>(path_, "the queue's database");
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

std::vector<std::string> SqliteDriver::identifiers(const std::string& after, std::size_t limit) {
    Query row = database().query("SELECT id FROM entry WHERE id > ? ORDER BY id LIMIT ?");
    row << after << static_cast<int64_t>(limit);
    std::vector<std::string> ids;
    while (row.next()) row >> ids.emplace_back();
    return ids;
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
    Database& db = database();
    const Transaction snapshot(db, Transaction::kReading);
    auto entry = read_entry(db, id);
    if (entry) entry->envelope.recipients = read_recipients(db, Selection{id});
    return entry;
}

std::vector<Entry> SqliteDriver::list(const ListFilter& filter, std::size_t limit) {
    Database& db = database();
    const Transaction snapshot(db, Transaction::kReading);
    const std::string channel = filter.channel.value_or("");
    Query row = db.query(
        "SELECT DISTINCT entry FROM recipient WHERE entry > ?1 AND (state & ?2) != 0 AND (?3 OR channel = ?4)"
        " ORDER BY entry LIMIT ?5");
    row << filter.after << filter.states << !filter.channel << channel << static_cast<int64_t>(limit);
    std::vector<Entry> entries;
    for (std::size_t recipients = 0; recipients < kMany && row.next();) {
        std::string id;
        row >> id;
        auto entry = read_entry(db, id);
        if (!entry) throw QueueError("the queue's database has a recipient without its entry: " + id);
        entry->envelope.recipients = read_recipients(db, Selection{id, MQ_ALL, filter.states, {}});
        recipients += entry->envelope.recipients.size();
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
