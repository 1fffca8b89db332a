#include "platform/queue/sqlite_rows.h"

namespace vel {
namespace {

constexpr const char* kInsertEntry =
    "INSERT INTO entry (id, channel, priority, arrival, size, number, number2,"
    " sender, envelope_id, return_type, sender_number, sender_text, sender_channel)"
    " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";

constexpr const char* kInsertRecipient =
    "INSERT INTO recipient (entry, number, channel, address, original, notify, text, text2,"
    " state, due, deferred, attempts, reason, consumer, lease_until)"
    " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, '', 0)";

constexpr const char* kReadEntry =
    "SELECT channel, priority, arrival, size, number, number2,"
    " sender, envelope_id, return_type, sender_number, sender_text, sender_channel FROM entry WHERE id = ?";

constexpr const char* kReadRecipients =
    "SELECT number, channel, address, original, notify, text, text2, state, due, deferred, attempts, reason"
    " FROM recipient WHERE entry = ?1 AND number BETWEEN ?2 AND ?3 AND (state & ?4) != 0 AND (?5 = '' OR consumer = ?5)"
    " ORDER BY number";

void insert(Database& database, const std::string& id, const Recipient& recipient) {
    Query query = database.query(kInsertRecipient);
    query << id << recipient.number << recipient.channel << recipient.address << recipient.original;
    query << recipient.notify << recipient.text << recipient.text2;
    query << recipient.state << recipient.due << recipient.deferred << recipient.attempts << recipient.reason;
    query.run();
}

Recipient next_recipient(Query& row) {
    Recipient recipient;
    row >> recipient.number >> recipient.channel >> recipient.address >> recipient.original;
    row >> recipient.notify >> recipient.text >> recipient.text2;
    row >> recipient.state >> recipient.due >> recipient.deferred >> recipient.attempts >> recipient.reason;
    return recipient;
}

void append_recipients(Database& database, const Selection& selection, std::vector<Recipient>& recipients) {
    const bool all = selection.recipient == MQ_ALL;
    Query row = database.query(kReadRecipients);
    row << selection.id << (all ? 0 : selection.recipient) << (all ? INT32_MAX : selection.recipient);
    row << selection.states << selection.consumer;
    while (row.next()) recipients.push_back(next_recipient(row));
}

}  // namespace

void insert(Database& database, const Entry& entry) {
    const auto& [number, number2, sender, recipients] = entry.envelope;
    Query query = database.query(kInsertEntry);
    query << entry.id << entry.channel << entry.priority << entry.arrival << entry.size << number << number2;
    query << sender.address << sender.envelope_id << sender.return_type << sender.number << sender.text;
    query << sender.channel;
    query.run();
    for (const Recipient& recipient : recipients) insert(database, entry.id, recipient);
}

std::optional<Entry> read_entry(Database& database, const std::string& id) {
    Query row = database.query(kReadEntry);
    row << id;
    if (!row.next()) return std::nullopt;
    Entry entry;
    entry.id = id;
    Sender& sender = entry.envelope.sender;
    row >> entry.channel >> entry.priority >> entry.arrival >> entry.size;
    row >> entry.envelope.number >> entry.envelope.number2;
    row >> sender.address >> sender.envelope_id >> sender.return_type >> sender.number >> sender.text;
    row >> sender.channel;
    return entry;
}

// What a consumer has claimed of an entry is found by its index: others may have very many recipients of it.
std::vector<Recipient> read_recipients(Database& database, const Selection& selection) {
    std::vector<Recipient> recipients;
    if (selection.consumer.empty() || selection.recipient != MQ_ALL) {
        append_recipients(database, selection, recipients);
        return recipients;
    }
    Selection one = selection;
    Query row =
        database.query("SELECT number FROM recipient WHERE state = 2 AND consumer = ? AND entry = ? ORDER BY number");
    row << selection.consumer << selection.id;
    while (row.next()) {
        row >> one.recipient;
        append_recipients(database, one, recipients);
    }
    return recipients;
}

}  // namespace vel
