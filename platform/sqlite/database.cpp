#include "platform/sqlite/database.h"

#include <exception>

#include "platform/failure.h"

namespace vel {
namespace {

// Others hold the database for the time of a sync, many of them perhaps, before it is this process's turn.
constexpr int kBusyMilliseconds = 60'000;

[[noreturn]] void fail(const char* name, sqlite3* connection) {
    const std::string text =
        std::string(name) + " failed: " + (connection ? sqlite3_errmsg(connection) : "out of memory");
    const int code = connection ? sqlite3_errcode(connection) : SQLITE_NOMEM;
    if (code == SQLITE_CORRUPT || code == SQLITE_NOTADB) throw DamagedError(text);
    throw Failure(text);
}

}  // namespace

Query::~Query() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

void Query::check(int result) const {
    if (result != SQLITE_OK) fail(name_, sqlite3_db_handle(statement_));
}

Query& Query::operator<<(int64_t value) {
    check(sqlite3_bind_int64(statement_, ++bound_, value));
    return *this;
}

// The address of an empty text may be null, which would bind NULL.
Query& Query::operator<<(std::string_view text) {
    const char* const begin = text.empty() ? "" : text.data();
    check(sqlite3_bind_text64(statement_, ++bound_, begin, text.size(), SQLITE_STATIC, SQLITE_UTF8));
    return *this;
}

Query& Query::bind_bytes(std::string_view bytes) {
    const char* const begin = bytes.empty() ? "" : bytes.data();
    check(sqlite3_bind_blob64(statement_, ++bound_, begin, bytes.size(), SQLITE_STATIC));
    return *this;
}

bool Query::next() {
    column_ = 0;
    const int result = sqlite3_step(statement_);
    if (result != SQLITE_ROW && result != SQLITE_DONE) fail(name_, sqlite3_db_handle(statement_));
    return result == SQLITE_ROW;
}

int64_t Query::run() {
    while (next()) continue;
    return sqlite3_changes64(sqlite3_db_handle(statement_));
}

Query& Query::operator>>(int64_t& value) {
    value = sqlite3_column_int64(statement_, column_++);
    return *this;
}

Query& Query::operator>>(int32_t& value) {
    value = sqlite3_column_int(statement_, column_++);
    return *this;
}

Query& Query::operator>>(bool& value) {
    value = sqlite3_column_int(statement_, column_++) != 0;
    return *this;
}

Query& Query::operator>>(std::string& text) {
    std::string_view bytes;
    *this >> bytes;
    text = bytes;
    return *this;
}

Query& Query::operator>>(std::string_view& bytes) {
    const auto* const begin = static_cast<const char*>(sqlite3_column_blob(statement_, column_));
    bytes = {begin ? begin : "", static_cast<std::size_t>(sqlite3_column_bytes(statement_, column_))};
    ++column_;
    return *this;
}

// The connection exists, and is to be closed, even when opening it has failed.
Database::Database(const std::string& path, const char* name) : name_(name) {
    sqlite3* connection = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE;
    const int result = sqlite3_open_v2(path.c_str(), &connection, flags, nullptr);
    connection_.reset(connection);
    if (result != SQLITE_OK) fail(name, connection);
    sqlite3_busy_timeout(connection, kBusyMilliseconds);
}

Database::Statement Database::prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(connection_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK) {
        fail(name_, connection_.get());
    }
    return Statement(statement);
}

Query Database::query(const char* sql) {
    Statement& statement = statements_[sql];
    if (!statement) statement = prepare(sql);
    return Query(statement.get(), name_);
}

void Database::execute(const char* sql) {
    if (sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) fail(name_, connection_.get());
}

template <class Value>
Value Database::value(const char* sql) {
    const Statement statement = prepare(sql);
    Query query(statement.get(), name_);
    Value value{};
    if (query.next()) query >> value;
    return value;
}

template int64_t Database::value(const char* sql);
template std::string Database::value(const char* sql);

bool Database::has_moved() const {
    int moved = 0;
    sqlite3_file_control(connection_.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    return moved != 0;
}

Transaction::Transaction(Database& database, const char* kind) : database_(database) { database_.query(kind).run(); }

void Transaction::commit() {
    try {
        database_.query("COMMIT").run();
    } catch (const Failure& error) {
        throw CommitError(error.what());
    }
}

// SQLite has undone some transactions by itself by now. What cannot be undone here is undone when the connection is
// used next, or closed.
Transaction::~Transaction() {
    if (!database_.busy()) return;
    try {
        database_.query("ROLLBACK").run();
    } catch (const std::exception&) {
    }
}

}  // namespace vel
