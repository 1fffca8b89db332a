// How recipients pass from one hand to the next.
#include <algorithm>

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

std::optional<Turn> next_turn(Database& database, const std::string& channel, int64_t now) {
    Query row = database.query(
        "SELECT due, entry FROM recipient WHERE state = 1 AND channel = ? AND due <= ? ORDER BY due, entry LIMIT 1");
    row << channel << now;
    return first_of(row);
}

std::optional<Turn> next_turn(Database& database, const ClaimRequest& request) {
    if (!request.channels) {
        Query row =
            database.query("SELECT due, entry FROM recipient WHERE state = 1 AND due <= ? ORDER BY due, entry LIMIT 1");
        row << request.now;
        return first_of(row);
    }
    std::optional<Turn> first;
    for (const std::string& channel : *request.channels) {
        auto turn = next_turn(database, channel, request.now);
        if (turn && (!first || *turn < *first)) first = std::move(turn);
    }
    return first;
}

// Whoever let a lease end stands behind what was due before.
constexpr const char* kEndLeases =
    "UPDATE recipient SET state = 1, due = ?1, consumer = '', lease_until = 0 WHERE state = 2 AND lease_until <= ?1";

// Asked before a transaction, which makes others wait, is begun.
bool is_idle(Database& database, const ClaimRequest& request) {
    Query ended = database.query("SELECT 1 FROM recipient WHERE state = 2 AND lease_until <= ? LIMIT 1");
    ended << request.now;
    return !ended.next() && !next_turn(database, request);
}

bool matches(const ClaimRequest& request, const Recipient& recipient) {
    const auto& channels = request.channels;
    return recipient.due <= request.now &&
           (!channels || std::find(channels->begin(), channels->end(), recipient.channel) != channels->end());
}

void keep_matching(std::vector<Recipient>& recipients, const ClaimRequest& request) {
    std::erase_if(recipients, [&](const Recipient& recipient) { return !matches(request, recipient); });
    std::stable_sort(recipients.begin(), recipients.end(),
                     [](const Recipient& a, const Recipient& b) { return a.due < b.due; });
    if (request.limit != 0 && recipients.size() > request.limit) recipients.resize(request.limit);
}

void lease(Database& database, const std::string& id, Recipient& recipient, const ClaimRequest& request) {
    Query query = database.query(
        "UPDATE recipient SET state = 2, attempts = attempts + 1, consumer = ?, lease_until = ?"
        " WHERE entry = ? AND number = ?");
    query << request.consumer << request.lease_until << id << recipient.number;
    query.run();
    recipient.state = MQ_CLAIMED;
    ++recipient.attempts;
}

}  // namespace

std::optional<Entry> SqliteDriver::claim(const ClaimRequest& request) {
    Database& db = database();
    if (is_idle(db, request)) return std::nullopt;
    Transaction transaction(db);
    {
        Query query = db.query(kEndLeases);
        query << request.now;
        query.run();
    }
    const auto turn = next_turn(db, request);
    auto entry = turn ? read_entry(db, turn->id) : std::nullopt;
    if (entry) {
        auto& recipients = entry->envelope.recipients;
        recipients = read_recipients(db, Selection{entry->id, MQ_ALL, MQ_WAITING, {}});
        keep_matching(recipients, request);
        for (Recipient& recipient : recipients) lease(db, entry->id, recipient, request);
    }
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
            "UPDATE recipient SET state = ?, due = ?, reason = ?, consumer = '', lease_until = 0"
            " WHERE entry = ? AND number = ?");
        const std::string& reason = change.reason ? *change.reason : recipient.reason;
        query << change.state << change.due.value_or(recipient.due) << reason << selection.id << recipient.number;
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
    Query row = database().query("SELECT DISTINCT consumer FROM recipient WHERE state = 2");
    std::vector<std::string> consumers;
    while (row.next()) row >> consumers.emplace_back();
    return consumers;
}

void SqliteDriver::take_back(const std::string& consumer, int64_t now) {
    Database& db = database();
    Transaction transaction(db);
    Query query = db.query(
        "UPDATE recipient SET state = 1, due = ?, consumer = '', lease_until = 0 WHERE state = 2 AND consumer = ?");
    query << now << consumer;
    query.run();
    transaction.commit();
}

}  // namespace vel
