// SQLite, as the local libraries use it: statements that are prepared once, transactions that end by themselves.
#ifndef VEL_PLATFORM_SQLITE_DATABASE_H
#define VEL_PLATFORM_SQLITE_DATABASE_H

#include <sqlite3.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace vel {

// One run of a statement. Values are bound in their order, columns are read in theirs.
class Query {
  public:
    // The database's name is that of its failures.
    Query(sqlite3_stmt* statement, const char* name) : statement_(statement), name_(name) {}
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;
    ~Query();

    // A text must live until the query ends.
    Query& operator<<(int64_t value);
    Query& operator<<(std::string_view text);
    // Bytes of any kind, which must live as long.
    Query& bind_bytes(std::string_view bytes);

    // Moves to the next row; false behind the last. Throws on failure.
    bool next();
    // For statements without rows; returns how many rows were changed.
    int64_t run();

    Query& operator>>(int64_t& value);
    Query& operator>>(int32_t& value);
    Query& operator>>(bool& value);
    Query& operator>>(std::string& text);
    // Lives until the query moves on.
    Query& operator>>(std::string_view& bytes);

  private:
    void check(int result) const;

    sqlite3_stmt* statement_;
    const char* const name_;
    int bound_ = 0;
    int column_ = 0;
};

// One connection. Every failure is a Failure.
class Database {
  public:
    // The file is there, perhaps empty. The name, what messages call the database, lives as long as the program.
    Database(const std::string& path, const char* name);

    // The statement of an SQL text that lives as long as the program.
    Query query(const char* sql);
    void execute(const char* sql);
    // The first value of a statement that is run once.
    int64_t number(const char* sql) { return value<int64_t>(sql); }
    std::string text(const char* sql) { return value<std::string>(sql); }
    // Whether a transaction is open.
    bool busy() const { return sqlite3_get_autocommit(connection_.get()) == 0; }
    // The row that was added last.
    int64_t last_added() const { return sqlite3_last_insert_rowid(connection_.get()); }
    // Whether its file has lost its name, or another has it.
    bool has_moved() const;

  private:
    struct Closed {
        void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
    };
    struct Finalized {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Finalized>;

    Statement prepare(const char* sql);
    template <class Value>
    Value value(const char* sql);

    const char* const name_;
    std::unique_ptr<sqlite3, Closed> connection_;
    std::map<const char*, Statement> statements_;
};

// A transaction, undone unless it is committed. One that only reads sees what was there at its first statement.
class Transaction {
  public:
    static constexpr const char* kWriting = "BEGIN IMMEDIATE";
    static constexpr const char* kReading = "BEGIN";

    explicit Transaction(Database& database, const char* kind = kWriting);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    void commit();

  private:
    Database& database_;
};

}  // namespace vel

#endif
