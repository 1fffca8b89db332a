// How recipients pass from one hand to the next.
#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "platform/queue/sqlite_driver.h"
#include "platform/queue/sqlite_rows.h"

namespace vel {
namespace {

// A recipient's turn.
struct Turn {
    int64_t due;
    std::string id;
    auto operator<=>(const Turn&) const = default;
};

std::optional<Turn> first_of(Query& row) {
    if (!row.next()) return std::nullopt;
    Turn turn;
    row >> turn.due >> turn.id;
    return turn;
}

// Which recipients are due: of those that are deferred whose time has come, of the others all.
struct Due {
    bool deferred;
    int64_t latest;
};

std::array<Due, 2> both_kinds(const ClaimRequest& request) { return {{{false, INT64_MAX}, {true, request.now}}}; }

std::optional<Turn> next_turn(Database& database, const Due& due) {
    Query row = database.query(
        "SELECT due, entry FROM recipient WHERE state = 1 AND deferred = ? AND due <= ? ORDER BY due, entry LIMIT 1");
    row << due.deferred << due.latest;
    return first_of(row);
}

std::optional<Turn> next_turn(Database& database, const Due& due, const std::string& channel) {
    Query row = database.query(
        "SELECT due, entry FROM recipient WHERE state = 1 AND channel = ? AND deferred = ? AND due <= ?"
        " ORDER BY due, entry LIMIT 1");
    row << channel << due.deferred << due.latest;
    return first_of(row);
}

std::optional<Turn> next_turn(Database& database, const ClaimRequest& request) {
    std::optional<Turn> first;
    const auto keep_earlier = [&](std::optional<Turn> turn) {
        if (turn && (!first || *turn < *first)) first = std::move(turn);
    };
    for (const Due& due : both_kinds(request)) {
        if (!request.channels) keep_earlier(next_turn(database, due));
        for (const std::string& channel : request.channels.value_or(std::vector<std::string>())) {
            keep_earlier(next_turn(database, due, channel));
        }
    }
    return first;
}

// Whoever lets a lease end stands behind what was due before, whatever the clock says.
void end_leases(Database& database, int64_t until, int64_t now) {
    Query query = database.query(
        "UPDATE recipient SET state = 1, deferred = 0, consumer = '', lease_until = 0,"
        " due = max(?1, (SELECT ifnull(max(due) + 1, 0) FROM recipient WHERE state = 1 AND deferred = 0))"
        " WHERE state = 2 AND lease_until <= ?2");
    query << now << until;
    query.run();
}

// Asked before a transaction, which makes others wait, is begun.
bool is_idle(Database& database, const ClaimRequest& request) {
    Query ended = database.query("SELECT 1 FROM recipient WHERE state = 2 AND lease_until <= ? LIMIT 1");
    ended << request.uptime;
    return !ended.next() && !next_turn(database, request);
}

bool is_wanted(const std::string& channel, const ClaimRequest& request) {
    const auto& channels = request.channels;
    return !channels || std::find(channels->begin(), channels->end(), channel) != channels->end();
}

// The numbers of an entry's recipients that are due, by due time.
std::vector<int32_t> due_recipients(Database& database, const std::string& id, const ClaimRequest& request) {
    const std::size_t limit = request.limit ? request.limit : SIZE_MAX;
    std::vector<std::pair<int64_t, int32_t>> turns;
    for (const Due& due : both_kinds(request)) {
        Query row = database.query(
            "SELECT due, number, channel FROM recipient WHERE state = 1 AND entry = ? AND deferred = ? AND due <= ?"
            " ORDER BY due, number");
        row << id << due.deferred << due.latest;
        for (std::size_t found = 0; found < limit && row.next();) {
            std::pair<int64_t, int32_t> turn;
            std::string channel;
            row >> turn.first >> turn.second >> channel;
            if (!is_wanted(channel, request)) continue;
            turns.push_back(turn);
            ++found;
        }
    }
    std::sort(turns.begin(), turns.end());
    std::vector<int32_t> numbers;
    for (const auto& [due, number] : turns) numbers.push_back(number);
    numbers.resize(std::min(numbers.size(), limit));
    return numbers;
}

// The recipients, claimed.
std::vector<Recipient> lease(Database& database, const std::string& id, const ClaimRequest& request) {
    std::vector<Recipient> claimed;
    for (const int32_t number : due_recipients(database, id, request)) {
        Query query = database.query(
            "UPDATE recipient SET state = 2, attempts = attempts + 1, consumer = ?, lease_until = ?"
            " WHERE entry = ? AND number = ?");
        query << request.consumer << request.lease_until << id << number;
        query.run();
        for (Recipient& recipient : read_recipients(database, Selection{id, number}))
            claimed.push_back(std::move(recipient));
    }
    return claimed;
}

}  // namespace

std::optional<Entry> SqliteDriver::claim(const ClaimRequest& request) {
    Database& db = database();
    if (is_idle(db, request)) return std::nullopt;
    Transaction transaction(db);
    end_leases(db, request.uptime, request.now);
    const auto turn = next_turn(db, request);
    auto entry = turn ? read_entry(db, turn->id) : std::nullopt;
    if (entry) entry->envelope.recipients = lease(db, entry->id, request);
    transaction.commit();
    return entry;
}

std::size_t SqliteDriver::extend(const Selection& selection, int64_t lease_until) {
    Database& db = database();
    Transaction transaction(db);
    const auto recipients = read_recipients(db, selection);
    for (const Recipient& recipient : recipients) {
        Query query = db.query("UPDATE recipient SET lease_until = ? WHERE entry = ? AND number = ?");
        query << lease_until << selection.id << recipient.number;
        query.run();
    }
    transaction.commit();
    return recipients.size();
}

Settled SqliteDriver::change(const Selection& selection, const Change& change) {
    Database& db = database();
    Transaction transaction(db);
    auto entry = read_entry(db, selection.id);
    if (!entry) return {};
    entry->envelope.recipients = read_recipients(db, selection);
    for (const Recipient& recipient : entry->envelope.recipients) {
        Query query = db.query(
            "UPDATE recipient SET state = ?, due = ?, deferred = ?, reason = ?, consumer = '', lease_until = 0"
            " WHERE entry = ? AND number = ?");
        const std::string& reason = change.reason ? *change.reason : recipient.reason;
        query << change.state << change.due.value_or(recipient.due) << (change.due || recipient.deferred) << reason;
        query << selection.id << recipient.number;
        query.run();
    }
    transaction.commit();
    return {std::move(*entry), false};
}

Settled SqliteDriver::remove(const Selection& selection) {
    Database& db = database();
    Transaction transaction(db);
    auto entry = read_entry(db, selection.id);
    if (!entry) return {};
    entry->envelope.recipients = read_recipients(db, selection);
    for (const Recipient& recipient : entry->envelope.recipients) {
        Query query = db.query("DELETE FROM recipient WHERE entry = ? AND number = ?");
        query << selection.id << recipient.number;
        query.run();
    }
    Query query = db.query("DELETE FROM entry WHERE id = ?1 AND NOT EXISTS (SELECT 1 FROM recipient WHERE entry = ?1)");
    query << selection.id;
    const bool ended = query.run() == 1;
    transaction.commit();
    return {std::move(*entry), ended};
}

std::vector<std::string> SqliteDriver::claimants() {
    Database& db = database();
    std::vector<std::string> consumers;
    for (std::string last;;) {
        Query row =
            db.query("SELECT consumer FROM recipient WHERE state = 2 AND consumer > ? ORDER BY consumer LIMIT 1");
        row << last;
        if (!row.next()) return consumers;
        row >> consumers.emplace_back();
        last = consumers.back();
    }
}

void SqliteDriver::take_back(const std::string& consumer, int64_t now) {
    Database& db = database();
    Transaction transaction(db);
    Query query = db.query("UPDATE recipient SET lease_until = ? WHERE state = 2 AND consumer = ?");
    query << INT64_MIN << consumer;
    query.run();
    end_leases(db, INT64_MIN, now);
    transaction.commit();
}

}  // namespace vel
