// What every engine has to do, whichever it is. A new one adds its row below.
#include <memory>

#include "platform/queue/report.h"
#include "platform/queue/sqlite_driver.h"
#include "platform/sqlite/database.h"
#include "tests/platform/scratch.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Engine {
    const char* name;
    std::unique_ptr<Driver> (*open)(const std::string& directory);
};

std::unique_ptr<Driver> open_sqlite(const std::string& directory) {
    return std::make_unique<SqliteDriver>(directory + "/queue.db");
}

Entry entry(const std::string& id, const std::string& channel, const std::vector<int64_t>& due, bool deferred = true) {
    Entry entry;
    entry.id = id;
    entry.channel = channel;
    for (const int64_t time : due) {
        Recipient& recipient = entry.envelope.recipients.emplace_back();
        recipient.number = static_cast<int32_t>(entry.envelope.recipients.size() - 1);
        recipient.address = id + std::to_string(recipient.number);
        recipient.channel = channel;
        recipient.due = time;
        recipient.deferred = deferred;
    }
    return entry;
}

class QueueDriver : public Scratch, public testing::WithParamInterface<Engine> {
  protected:
    QueueDriver() { reopen(); }
    void reopen() {
        driver_.reset();
        driver_ = GetParam().open(path(""));
    }
    void commit(const Entry& entry) {
        const Entry* const one = &entry;
        driver_->commit({&one, 1});
    }

    // The addresses claimed, "-" when nothing is.
    std::string claim(const std::string& consumer, int64_t now, std::optional<std::vector<std::string>> channels = {},
                      std::size_t limit = 0, int64_t lease = 10) {
        const auto entry = driver_->claim({consumer, std::move(channels), limit, now, now, now + lease});
        if (!entry) return "-";
        std::string addresses;
        for (const Recipient& recipient : entry->envelope.recipients) addresses += recipient.address + " ";
        return addresses;
    }

    // "address state due attempts reason" of an entry's recipients.
    std::vector<std::string> states(const std::string& id) {
        std::vector<std::string> lines;
        const auto entry = driver_->read(id);
        if (!entry) return {"gone"};
        for (const Recipient& r : entry->envelope.recipients) {
            lines.push_back(r.address + " " + std::to_string(r.state) + " " + std::to_string(r.due) + " " +
                            std::to_string(r.attempts) + " " + r.reason);
        }
        return lines;
    }

    std::unique_ptr<Driver> driver_;
};

TEST_P(QueueDriver, commits_all_or_nothing_and_remembers) {
    const Entry a = entry("a", "x", {1});
    const Entry b = entry("b", "x", {1});
    const std::vector<const Entry*> twice = {&b, &a, &b};
    EXPECT_THROW(driver_->commit(twice), QueueError);
    EXPECT_FALSE(driver_->has("a"));
    commit(a);
    EXPECT_THROW(commit(a), QueueError);
    driver_->seal();
    reopen();
    EXPECT_TRUE(driver_->has("a"));
    EXPECT_THAT(states("a"), ElementsAre("a0 1 1 0 "));
    EXPECT_THAT(driver_->faults(), IsEmpty());
}

TEST_P(QueueDriver, takes_turns_by_due_time_then_identifier) {
    commit(entry("b", "x", {5, 3, 9}));
    commit(entry("a", "y", {3}));
    commit(entry("c", "X", {1}));
    EXPECT_EQ(claim("me", 0), "-");
    EXPECT_EQ(claim("me", 9, std::vector<std::string>{}), "-");
    EXPECT_EQ(claim("me", 9, std::vector<std::string>{"z"}), "-");
    EXPECT_EQ(claim("me", 8, std::vector<std::string>{"x", "y"}), "a0 ");
    EXPECT_EQ(claim("me", 8, std::vector<std::string>{"x", "y"}), "b1 b0 ");
    EXPECT_EQ(claim("me", 9, std::nullopt, 1), "c0 ");
    EXPECT_EQ(claim("me", 9), "b2 ");
    EXPECT_EQ(claim("me", 9), "-");
    EXPECT_THAT(driver_->claimants(), ElementsAre("me"));
}

TEST_P(QueueDriver, a_lease_that_ends_puts_the_recipient_behind_the_others) {
    commit(entry("a", "x", {1}));
    EXPECT_EQ(claim("dead", 10), "a0 ");
    EXPECT_EQ(driver_->extend({"a", MQ_ALL, MQ_CLAIMED, "other"}, 99), 0u);
    EXPECT_EQ(driver_->extend({"a", 0, MQ_CLAIMED, "dead"}, 30), 1u);
    EXPECT_EQ(claim("me", 29), "-");
    commit(entry("b", "x", {29}));
    EXPECT_EQ(claim("me", 30), "b0 ");
    EXPECT_EQ(claim("me", 30), "a0 ");
    EXPECT_THAT(states("a"), ElementsAre("a0 2 30 2 "));
    driver_->take_back("other", 40);
    EXPECT_THAT(states("a"), ElementsAre("a0 2 30 2 "));
    driver_->take_back("me", 40);
    EXPECT_THAT(states("a"), ElementsAre("a0 1 40 2 "));
}

// Only what was deferred waits for the clock; nobody gets in front by it.
TEST_P(QueueDriver, bears_a_clock_that_is_set_back) {
    commit(entry("a", "x", {100}, false));
    commit(entry("b", "x", {60}));
    EXPECT_EQ(claim("dies", 50), "a0 ");
    EXPECT_EQ(claim("me", 50, std::vector<std::string>{"x"}), "-");
    commit(entry("c", "x", {90}, false));
    driver_->take_back("dies", 50);
    EXPECT_THAT(states("a"), ElementsAre("a0 1 91 1 "));
    EXPECT_EQ(claim("me", 50, std::vector<std::string>{"x"}), "c0 ");
    EXPECT_EQ(claim("me", 60), "b0 ");
    EXPECT_EQ(claim("me", 60), "a0 ");
}

TEST_P(QueueDriver, a_limit_takes_those_that_are_due_longest) {
    Entry mixed = entry("a", "x", {5, 3, 9, 4});
    mixed.envelope.recipients[3].deferred = false;
    commit(mixed);
    EXPECT_EQ(claim("me", 9, std::nullopt, 2), "a1 a3 ");
    EXPECT_EQ(claim("me", 9, std::nullopt, 3), "a0 a2 ");
}

TEST_P(QueueDriver, changes_and_removes_what_is_selected_and_nothing_else) {
    commit(entry("a", "x", {1, 2, 3}));
    EXPECT_EQ(claim("me", 2), "a0 a1 ");
    EXPECT_THAT(driver_->change({"a", MQ_ALL, MQ_CLAIMED, "other"}, {MQ_HELD}).entry.envelope.recipients, IsEmpty());
    EXPECT_THAT(driver_->change({"none", MQ_ALL}, {MQ_HELD}).entry.envelope.recipients, IsEmpty());
    EXPECT_EQ(driver_->change({"a", 0, MQ_CLAIMED, "me"}, {MQ_WAITING, 50, "busy"}).entry.envelope.recipients.size(),
              1u);
    EXPECT_EQ(driver_->change({"a", MQ_ALL, MQ_CLAIMED}, {MQ_HELD}).entry.envelope.recipients.size(), 1u);
    EXPECT_THAT(states("a"), ElementsAre("a0 1 50 1 busy", "a1 4 2 1 ", "a2 1 3 0 "));
    EXPECT_THAT(driver_->remove({"a", -2}).entry.envelope.recipients, IsEmpty());
    EXPECT_FALSE(driver_->remove({"a", MQ_ALL, MQ_WAITING}).ended);
    EXPECT_THAT(states("a"), ElementsAre("a1 4 2 1 "));
    EXPECT_TRUE(driver_->remove({"a", 1}).ended);
    EXPECT_THAT(states("a"), ElementsAre("gone"));
    EXPECT_FALSE(driver_->remove({"a", 1}).ended);
}

TEST_P(QueueDriver, lists_page_by_page_what_matches) {
    for (const char* id : {"c", "a", "b"}) commit(entry(id, id[0] == 'b' ? "y" : "x", {1, 1}));
    EXPECT_EQ(claim("me", 1, std::nullopt, 1), "a0 ");
    const auto ids = [&](const ListFilter& filter, std::size_t limit) {
        std::string text;
        for (const Entry& entry : driver_->list(filter, limit)) {
            text += entry.id + std::to_string(entry.envelope.recipients.size());
        }
        return text;
    };
    const int32_t all = MQ_WAITING | MQ_CLAIMED | MQ_HELD;
    EXPECT_EQ(ids({std::nullopt, all, ""}, 2), "a2b2");
    EXPECT_EQ(ids({std::nullopt, all, "b"}, 2), "c2");
    EXPECT_EQ(ids({"x", MQ_WAITING, ""}, 9), "a1c2");
    EXPECT_EQ(ids({std::nullopt, MQ_HELD, ""}, 9), "");
    EXPECT_EQ(driver_->count().size(), 3u);
    EXPECT_THAT(driver_->identifiers("a", 1), ElementsAre("b"));
}

INSTANTIATE_TEST_SUITE_P(Engines, QueueDriver, testing::Values(Engine{"sqlite", open_sqlite}),
                         [](const auto& engine) { return std::string(engine.param.name); });

// A later version's, or another program's, tables are left alone.
TEST(QueueDatabase, is_refused_when_it_is_not_ours) {
    const std::string path = testing::TempDir() + "vel-foreign-" + std::to_string(::getpid()) + ".db";
    for (const char* const sql : {"CREATE TABLE mine (a)", "PRAGMA application_id = 7",
                                  "PRAGMA application_id = 0x56514d31; PRAGMA user_version = 2"}) {
        std::filesystem::remove(path);
        std::ofstream{path};
        Database(path, "another database").execute(sql);
        EXPECT_THROW(SqliteDriver{path}, QueueError) << sql;
    }
    std::filesystem::remove(path);
}

}  // namespace
}  // namespace vel::test
