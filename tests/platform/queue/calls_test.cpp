#include "tests/platform/queue/place.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class QueueCalls : public StartedQueue {};

// The directories that a queue cannot live in, and what the log says.
TEST_F(QueueCalls, refuses_a_directory_that_will_not_do) {
    write("file", "");
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", "1 MQInit: [Gateway] QueueDirectory is empty."},
        {"queue", "1 MQInit: [Gateway] QueueDirectory is not absolute: queue."},
        {path("none"), "1 MQInit: cannot use " + path("none") + ": No such file or directory."},
        {path("file"), "1 MQInit: [Gateway] QueueDirectory is no directory: " + path("file") + "."},
    };
    for (const auto& [directory, line] : cases) {
        ProfileOverlaySet("Gateway", "QueueDirectory", directory.c_str());
        EXPECT_EQ(MQInit(nullptr, nullptr), 0);
        EXPECT_THAT(take_log(), ElementsAre(line));
    }
}

TEST_F(QueueCalls, gives_names_that_last_and_copies_everything) {
    MQContext* const context = CreateMQEntry();
    ASSERT_NE(context, nullptr);
    const char* const base = GetMQPathName(context, "");
    const char* const message = GetMQPathName(context, ".msg");
    EXPECT_EQ(GetMQPathName(context, nullptr), base);
    EXPECT_EQ(message, std::string(base) + ".msg");
    EXPECT_TRUE(std::filesystem::exists(std::string(base) + ".lck"));
    EXPECT_THAT(std::filesystem::path(base).filename().string(), testing::MatchesRegex("[0-9a-v]{24}"));

    put_message(message, "Hello\r\n");
    {
        stEnvelope envelope;
        std::string address = "a\n\"b@example.com";
        std::string forged = "x\nqueued: forged";
        _envFrom from{"s", "id", VEL_RET_FULL, 7, nullptr, "c"};
        _envRecip to{address.c_str(), forged.c_str(), VEL_NOTIFY_DELAY, "t", "u"};
        envelope.number = 5;
        envelope.number2 = -1;
        envelope.senders.Add(&from);
        for (int i = 0; i < 3; ++i) envelope.recipients.Add(&to);
        envelope.recipients.Next();  // Wherever the cursor stands.
        EXPECT_EQ(InsertMQChannel(context, "channel", 255), 1);
        EXPECT_EQ(PutMQEnvelope(context, TestEnvelope({"replaced"}).get()), 1);
        EXPECT_EQ(PutMQEnvelope(context, &envelope), 1);
        address.assign("gone");
    }
    const std::string id = std::filesystem::path(base).filename();
    const std::string path = message;
    EXPECT_THAT(listed(), IsEmpty());
    EXPECT_EQ(CloseMQEntry(context), 1);

    const OwnedEntry entry = read(id);
    EXPECT_EQ(entry->path, path);
    EXPECT_EQ(std::vector<int64_t>({entry->size, entry->priority, entry->number, entry->number2,
                                    entry->sender.returnType, entry->sender.number, entry->recipientCount}),
              std::vector<int64_t>({7, 255, 5, -1, VEL_RET_FULL, 7, 3}));
    EXPECT_EQ(std::string(entry->channel) + entry->sender.address + entry->sender.envelopeId + entry->sender.text +
                  entry->sender.channel,
              "channelsidc");
    const MQRecipient& last = entry->recipients[2];
    EXPECT_STREQ(last.address, "a\n\"b@example.com");
    EXPECT_STREQ(last.originalRecipient, "x\nqueued: forged");
    EXPECT_EQ(std::string(last.text) + last.text2, "tu");
    EXPECT_EQ(last.notify, VEL_NOTIFY_DELAY);
    EXPECT_EQ(last.due, entry->arrival);
    EXPECT_THAT(take_log(),
                testing::Each("3 queued: " + id +
                              " channel=\"channel\" recipient=\"a\n\"\"b@example.com\" size=7 who=\"module\""));
}

// Whatever is missing: nothing is visible, no file stays, and the context is gone.
TEST_F(QueueCalls, an_entry_that_is_not_complete_goes) {
    const std::vector<std::pair<std::string, std::function<void(MQContext*)>>> cases = {
        {"has no channel", [](MQContext* c) { PutMQEnvelope(c, TestEnvelope({"a"}).get()); }},
        {"has no envelope", [](MQContext* c) { InsertMQChannel(c, "c", 255); }},
        {"has no message",
         [](MQContext* c) {
             InsertMQChannel(c, "c", 255);
             PutMQEnvelope(c, TestEnvelope({"a"}).get());
             put_message(GetMQPathName(c, ".msg"), "");
         }},
        {"another file is in the place",
         [](MQContext* c) {
             InsertMQChannel(c, "c", 255);
             PutMQEnvelope(c, TestEnvelope({"a"}).get());
             const std::string path = GetMQPathName(c, ".msg");
             put_message(path + "2", "other");
             std::filesystem::rename(path + "2", path);
         }},
    };
    for (const auto& [reason, prepare] : cases) {
        MQContext* const context = CreateMQEntry();
        put_message(GetMQPathName(context, ".msg"), "text");
        prepare(context);
        EXPECT_EQ(CloseMQEntry(context), 0);
        EXPECT_THAT(take_log(), ElementsAre(HasSubstr(reason)));
        EXPECT_THAT(files(), IsEmpty()) << reason;
        EXPECT_EQ(DiscardMQEntry(context), 0);
        take_log();
    }
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(QueueCalls, null_and_dead_contexts_and_bad_arguments_are_harmless) {
    MQContext* const dead = CreateMQEntry();
    EXPECT_EQ(DiscardMQEntry(dead), 1);
    for (MQContext* const context : {static_cast<MQContext*>(nullptr), dead}) {
        EXPECT_EQ(GetMQPathName(context, ".msg"), nullptr);
        EXPECT_EQ(InsertMQChannel(context, "c", 255), 0);
        EXPECT_EQ(PutMQEnvelope(context, TestEnvelope({"a"}).get()), 0);
        EXPECT_EQ(CloseMQEntry(context), 0);
        EXPECT_EQ(DiscardMQEntry(context), 0);
    }
    MQContext* const context = CreateMQEntry();
    EXPECT_EQ(InsertMQChannel(context, "", 255), 0);
    EXPECT_EQ(InsertMQChannel(context, nullptr, 255), 0);
    EXPECT_EQ(PutMQEnvelope(context, nullptr), 0);
    stEnvelope nobody;
    EXPECT_EQ(PutMQEnvelope(context, &nobody), 0);
    EXPECT_EQ(DiscardMQEntry(context), 1);
    EXPECT_THAT(files(), IsEmpty());
    MQFreeEntry(nullptr);
    EXPECT_EQ(MQCloseConsumer(nullptr), 0);
}

// Open entries and consumers belong to the queue that they were opened in.
TEST_F(QueueCalls, a_change_of_the_directory_moves_nothing_that_is_open) {
    const std::string old = submit({"old"});
    MQContext* const open = CreateMQEntry();
    put_message(GetMQPathName(open, ".msg"), "text");
    const OwnedConsumer consumer(MQOpenConsumer("old"));
    const std::string queue = path("queue");
    std::filesystem::create_directory(path("other"));
    ProfileOverlaySet("Gateway", "QueueDirectory", path("other").c_str());
    EXPECT_EQ(MQInit(nullptr, nullptr), 1);
    EXPECT_NE(submit({"new"}), "");
    EXPECT_THAT(listed(), ElementsAre("new 1 0"));
    EXPECT_EQ(InsertMQChannel(open, "c", 255), 1);
    EXPECT_EQ(PutMQEnvelope(open, TestEnvelope({"opened"}).get()), 1);
    EXPECT_EQ(CloseMQEntry(open), 1);
    EXPECT_EQ(claim(consumer)->id, old);
    ProfileOverlayClear();
    EXPECT_EQ(MQInit(nullptr, nullptr), 1);
    EXPECT_THAT(listed(), ElementsAre("old 2 1", "opened 1 0"));
}

// What is committed to a database that has lost its name would be lost.
TEST_F(QueueCalls, a_queue_that_is_taken_away_fails_and_one_that_is_restored_is_used) {
    submit({"in the backup"});
    std::filesystem::copy(path("queue"), path("backup"), std::filesystem::copy_options::recursive);
    submit({"after it"});
    std::filesystem::rename(path("queue"), path("gone"));
    EXPECT_EQ(submit(), "");
    EXPECT_EQ(MQFreeBytes(), -1);
    std::filesystem::rename(path("backup"), path("queue"));
    EXPECT_NE(submit({"restored"}), "");
    EXPECT_THAT(listed(), ElementsAre("in the backup 1 0", "restored 1 0"));
}

// Without their tables messages look like what dead processes have left.
TEST_F(QueueCalls, messages_whose_tables_are_gone_are_left_alone) {
    submit();
    for (const char* const name : {"queue.db", "queue.db-wal", "queue.db-shm"}) {
        std::filesystem::remove(path("queue/" + std::string(name)));
    }
    take_log();
    EXPECT_EQ(MQInit(nullptr, nullptr), 0);
    std::filesystem::rename(path("queue"), path("moved"));
    ProfileOverlaySet("Gateway", "QueueDirectory", path("moved").c_str());
    EXPECT_EQ(MQInit(nullptr, nullptr), 0);
    EXPECT_THAT(
        take_log(),
        ElementsAre("1 MQInit: the queue's database failed: unable to open database file.",
                    "1 MQInit: there are messages, but their tables are gone: " + path("moved/queue.db") + "."));
    EXPECT_EQ(std::distance(std::filesystem::recursive_directory_iterator(path("moved")), {}), 64 + 1 + 1);
}

// A crash, or exec, leaves an open entry; another start takes it away, and neither a living one nor a committed one.
TEST_F(QueueCalls, reclaims_what_the_dead_left_open) {
    const std::string committed = submit();
    MQContext* const mine = CreateMQEntry();
    in_dying_child([] {
        CreateMQEntry();
        put_message(GetMQPathName(CreateMQEntry(), ".msg"), "half");
        submit({"of the child"});
    });
    EXPECT_THAT(files(), SizeIs(3 + 4 + 1));
    EXPECT_EQ(MQInit(nullptr, "again"), 1);
    EXPECT_THAT(files(), SizeIs(3 + 1));
    EXPECT_EQ(MQReclaim(), 0);
    put_message(GetMQPathName(mine, ".msg"), "whole");
    EXPECT_EQ(InsertMQChannel(mine, "c", 255), 1);
    EXPECT_EQ(PutMQEnvelope(mine, TestEnvelope({"mine"}).get()), 1);
    EXPECT_EQ(CloseMQEntry(mine), 1);
    EXPECT_THAT(listed(), ElementsAre("ann@example.com 1 0", "mine 1 0", "of the child 1 0"));
}

// A child has a connection of its own, and no part in what its parent has open.
TEST_F(QueueCalls, lives_on_in_both_after_a_fork) {
    MQContext* const mine = CreateMQEntry();
    const OwnedConsumer consumer(MQOpenConsumer("parent"));
    in_dying_child([&] {
        MQEntry* entry = nullptr;
        if (CloseMQEntry(mine) || DiscardMQEntry(mine) || MQClaim(consumer.get(), nullptr, 0, 1, &entry) != -1)
            ::_exit(1);
        if (submit({"child"}).empty()) ::_exit(2);
    });
    EXPECT_NE(submit({"parent"}), "");
    EXPECT_THAT(listed(), ElementsAre("child 1 0", "parent 1 0"));
    EXPECT_EQ(DiscardMQEntry(mine), 1);
}

TEST_F(QueueCalls, sweeps_message_locks_that_are_stale) {
    const std::string id = submit();
    const OwnedEntry entry = read(id);
    const std::string base = std::filesystem::path(entry->path).replace_extension();
    std::string alone = base;
    alone[alone.size() - 3] = alone[alone.size() - 3] == '0' ? '1' : '0';
    put_message(base + ".lck", "");
    put_message(alone + ".lck", "");
    MQReclaim();
    EXPECT_THAT(files(), SizeIs(2));
    std::filesystem::last_write_time(base + ".lck",
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(25));
    MQReclaim();
    EXPECT_THAT(files(), ElementsAre(id + ".msg"));
}

// What tables and files disagree on is told, and gone after a repair.
TEST_F(QueueCalls, checks_and_repairs) {
    const std::string missing = submit({"missing"});
    const std::string locked = submit();
    in_dying_child([] { CreateMQEntry(); });
    std::filesystem::remove(read(missing)->path);
    const std::filesystem::path lock = std::filesystem::path(read(locked)->path).replace_extension(".lck");
    put_message(lock, "");
    std::filesystem::last_write_time(lock, std::filesystem::file_time_type::clock::now() - std::chrono::hours(25));

    std::vector<std::string> findings;
    const MQFindingVisitor visit = [](void* context, const char* id, const char* what) {
        static_cast<std::vector<std::string>*>(context)->push_back(std::string(id) + " " + what);
    };
    EXPECT_EQ(MQCheck(0, visit, &findings), 3);
    EXPECT_THAT(findings,
                ElementsAre(testing::EndsWith("a message file without its entry"), locked + " a stale message lock",
                            missing + " the message file is missing or has another size"));
    EXPECT_EQ(MQCheck(1, visit, &findings), 3);
    EXPECT_EQ(MQCheck(0, visit, &findings), 1);
    EXPECT_THAT(listed(MQ_HELD), ElementsAre("missing 4 0"));
    EXPECT_THAT(files(), ElementsAre(locked + ".msg"));
}

}  // namespace
}  // namespace vel::test
