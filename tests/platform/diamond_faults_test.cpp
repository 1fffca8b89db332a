// Where the record database is damaged, or has not what it needs.
#include <sqlite3.h>
#include <sys/stat.h>

#include "tests/platform/relation.h"
#include "tests/support/small_disk.h"

namespace vel::test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// Whatever lies there: a clear status, and nothing is touched.
TEST_F(Diamond, tells_what_it_cannot_use) {
    made({"one", "two"});
    const std::string whole = content("words.db");
    const std::string identity = content("words.id0");
    const auto expect_status = [&](const std::string& records, const std::string& layout, int status) {
        std::filesystem::remove(path("words.db"));  // cheaper than writing over it
        write("words.db", records);
        write("words.id0", layout);
        EXPECT_EQ(Words(base_).status(), status);
        EXPECT_EQ(take_log().size(), status == DIA_MISSING ? 1u : 0u);
        EXPECT_EQ(content("words.db") + content("words.id0"), records + layout);
    };
    const auto changed = [&](std::size_t at, const std::string& bytes) {
        return std::string(whole).replace(at, bytes.size(), bytes);
    };
    const auto changed_by = [&](const char* sql) {
        sqlite3* database = nullptr;
        EXPECT_EQ(sqlite3_open(path("words.db").c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(database);
        return content("words.db");
    };
    const struct {
        const char* name;
        std::string records;
        std::string identity;
        int status;
    } rows[] = {
        {"text", "no database", identity, DIA_MISSING},
        {"another program's", changed(70, "x"), identity, DIA_MISSING},
        {"another format", changed(47, "\5"), identity, DIA_MISSING},
        {"another record", changed_by("INSERT INTO records (record) VALUES (x'00')"), identity, DIA_MISSING},
        {"another table", changed_by("DELETE FROM records; CREATE TABLE more (x)"), identity, DIA_MISSING},
        {"write-ahead log", changed(18, "\2\2"), identity, DIA_MISSING},
        {"damaged page", changed(8192, std::string(64, 'x')), identity, DIA_MISSING},
        {"another layout", whole, "diamond 1 words 8 00000000\n", DIA_LAYOUT},
        {"long identity", whole, identity + std::string(1 << 20, 'x'), DIA_LAYOUT},
        {"neither", "x", "y", DIA_MISSING},
        {"whole", whole, identity, DIA_OK},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        expect_status(row.records, row.identity, row.status);
    }
    for (std::size_t size = 0; size < whole.size(); size += size < 101 || size > whole.size() - 100 ? 1 : 97) {
        SCOPED_TRACE(size);
        expect_status(whole.substr(0, size), identity, DIA_MISSING);
    }
    for (std::size_t size = 0; size < identity.size(); ++size) {
        SCOPED_TRACE(size);
        expect_status(whole, identity.substr(0, size), DIA_LAYOUT);
    }
}

// Closed under its lock, and not when it can be used.
TEST_F(Diamond, makes_room_where_it_cannot_be_used) {
    made({"one"});
    const auto close = [&](bool locked) {
        Words relation(base_);
        if (locked) relation.lock();
        EXPECT_EQ(relation.close() + relation.close(), DIA_OK);
        EXPECT_EQ(relation.status(), DIA_CLOSED);
        EXPECT_EQ(relation.next(), locked ? DIA_CLOSED : DIA_NOT_LOCKED);
    };
    close(true);
    EXPECT_EQ(words(), "one ");
    // "a" is not kept twice when it comes twice.
    for (const char* damage : {"a", "a", "b", "a"}) {
        write("words.db", damage);
        write("words.id0", "x");
        close(false);
        EXPECT_EQ(content("words.db"), damage);
        close(true);
    }
    EXPECT_THAT(names(), UnorderedElementsAre("words.lock", "words.db.1", "words.id0.1", "words.db.2", "words.id0.2",
                                              "words.db.3", "words.id0.3"));
    EXPECT_EQ(content("words.db.1") + content("words.db.2") + content("words.db.3"), "aba");
    // Files of every kind, with what SQLite takes for the journal of the next one.
    EXPECT_EQ(::mkdir(path("words.db").c_str(), 0700) + ::mkfifo(path("words.id0").c_str(), 0600), 0);
    write("words.db-journal", "stale");
    close(true);
    EXPECT_EQ(content("words.db.4-journal"), "stale");
    made({"new"});
    EXPECT_EQ(words(), "new ");
    Words relation(base_);
    relation.lock();
    EXPECT_EQ(relation.create(), DIA_FAILED);
    EXPECT_THAT(take_log(), Contains(HasSubstr("words.db: File exists")));
}

TEST_F(Diamond, needs_a_directory) {
    for (const char* directory : {"", "/nowhere/at/all", "/etc/passwd"}) {
        diamondBase base(directory);
        Words relation(base);
        EXPECT_EQ(relation.status(), DIA_MISSING) << directory;
        EXPECT_EQ(relation.lock(), DIA_MISSING) << directory;
        EXPECT_EQ(relation.first(), DIA_NOT_LOCKED) << directory;
    }
    std::filesystem::create_symlink("/nowhere", path("words.lock"));
    EXPECT_EQ(Words(base_).lock(), DIA_FAILED);
    EXPECT_THAT(take_log(), Contains(HasSubstr("words.lock: Too many levels")));
}

// Wherever the disk ends, a call that succeeded stays and one that failed leaves nothing.
TEST_F(Diamond, survives_a_full_disk) {
    made({"0"});
    std::string expected = "0 ";
    bool failed = false;
    const std::size_t now = content("words.db").size();
    for (std::size_t room = 0; room < now + 16384; room += 700) {
        const std::string word = std::to_string(room);
        Words relation(base_);
        relation.lock();
        const SmallDisk disk(room);
        if (relation.add(word) == DIA_OK) {
            expected += word + " ";
        } else {
            failed = true;
        }
    }
    EXPECT_EQ(words(), expected);
    EXPECT_TRUE(failed);
    EXPECT_THAT(expected, HasSubstr(std::to_string((now + 16383) / 700 * 700)));
    EXPECT_THAT(take_log(), Not(IsEmpty()));
}

// SQLite gives up a large group by itself when the disk is full; what follows must not be made without the rest.
TEST_F(Diamond, keeps_nothing_of_a_group_that_the_disk_has_no_room_for) {
    magicdb table(base_);
    EXPECT_EQ(table.lock() + table.create() + table.hold(), DIA_OK);
    {
        const SmallDisk disk(1'500'000);
        while (table.add() == DIA_OK) continue;
    }
    EXPECT_EQ(table.add(), DIA_FAILED);
    EXPECT_EQ(table.keep(), DIA_FAILED);
    EXPECT_EQ(table.drop(), DIA_OK);
    EXPECT_EQ(table.first(), DIA_END);
    EXPECT_EQ(table.add(), DIA_OK);
}

// A table that only cannot be read now is not damaged: it would be set aside.
TEST_F(Diamond, is_not_taken_for_damaged_where_memory_ends) {
    {
        magicdb table(base_);
        EXPECT_EQ(table.lock() + table.create() + table.hold(), DIA_OK);
        for (int i = 0; i < 500; ++i) table.add();
        EXPECT_EQ(table.keep(), DIA_OK);
    }
    int status = DIA_FAILED;
    sqlite3_int64 room = 1;
    for (; status == DIA_FAILED; room += 1000) {
        sqlite3_hard_heap_limit64(sqlite3_memory_used() + room);
        magicdb table(base_);
        table.lock();
        status = table.status();
        sqlite3_hard_heap_limit64(0);
    }
    EXPECT_EQ(status, DIA_OK) << room;
    EXPECT_GT(room, 20'000);
}

// Wherever memory ends, for us or for SQLite: what succeeded in a group of changes that is kept stays, and nothing else.
TEST_F(Diamond, survives_a_lack_of_memory) {
    made({});
    std::string expected;
    int tries = 0;
    const auto add = [&](const std::string& word) {
        Words relation(base_);
        if (relation.lock() != DIA_OK || relation.hold() != DIA_OK) return 0;
        int added = 0;
        for (int i = 0; i < 3; ++i) added += relation.add(word) == DIA_OK;
        return relation.keep() == DIA_OK ? added : 0;
    };
    const auto adds_all = [&](auto starve, auto relieve) {
        const std::string word = std::to_string(++tries);
        starve();
        const int added = add(word);
        relieve();
        for (int i = 0; i < added; ++i) expected += word + " ";
        EXPECT_EQ(words(), expected);
        return added == 3;
    };
    for (const std::size_t refused : {std::size_t{1}, kEveryRequest}) {
        std::size_t granted = 0;
        do {
            adds_all([&] { memory = {granted++, refused, false}; }, [] { memory.granted = kEveryRequest; });
        } while (memory.has_failed);
        EXPECT_GT(granted, 20u);
    }
    sqlite3_int64 room = 1;
    while (!adds_all([&] { sqlite3_hard_heap_limit64(sqlite3_memory_used() + room); },
                     [] { sqlite3_hard_heap_limit64(0); })) {
        room += 500;
    }
    EXPECT_GT(room, 20'000);
    EXPECT_THAT(take_log(), Contains(HasSubstr("out of memory")));
}

}  // namespace
}  // namespace vel::test
