#include "tests/platform/queue/place.h"

namespace vel::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class QueueConsumers : public StartedQueue {};

TEST_F(QueueConsumers, each_recipient_goes_its_own_way_and_the_last_ends_the_entry) {
    const std::string id = submit({"a", "b", "c", "d"});
    take_log();
    const OwnedConsumer consumer(MQOpenConsumer("runner"));
    const OwnedEntry entry = claim(consumer, 3);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->id, id);
    EXPECT_EQ(MQFinish(consumer.get(), id.c_str(), 0), 1);
    EXPECT_EQ(MQDefer(consumer.get(), id.c_str(), 1, entry->arrival + int64_t{3'600'000'000}, "busy"), 1);
    EXPECT_EQ(MQFail(consumer.get(), id.c_str(), 2, "unknown"), 1);
    EXPECT_EQ(MQFinish(consumer.get(), id.c_str(), MQ_ALL), 0);
    EXPECT_EQ(MQFinish(consumer.get(), id.c_str(), 3), 0);
    for (const char* none : {"", "x", "none"}) EXPECT_EQ(MQFinish(consumer.get(), none, MQ_ALL), 0) << none;
    EXPECT_THAT(listed(), ElementsAre("b 1 1", "d 1 0"));

    EXPECT_EQ(claim(consumer)->recipients[0].number, 3);
    EXPECT_FALSE(claim(consumer));
    EXPECT_EQ(MQHold(consumer.get(), id.c_str(), MQ_ALL, "look"), 1);
    EXPECT_EQ(MQReleaseEntry(id.c_str(), MQ_ALL, "root"), 1);
    EXPECT_EQ(MQHoldEntry(id.c_str(), MQ_ALL, "stop", "root"), 2);
    EXPECT_THAT(listed(MQ_HELD), SizeIs(2));
    EXPECT_EQ(MQRemoveEntry(id.c_str(), 1, "root"), 1);
    EXPECT_THAT(files(), SizeIs(1));
    EXPECT_EQ(MQRemoveEntry(id.c_str(), MQ_ALL, "root"), 1);
    EXPECT_THAT(files(), IsEmpty());
    EXPECT_THAT(listed(), IsEmpty());

    const std::vector<std::string> events = {"claimed", "claimed", "claimed", "delivered", "deferred",
                                             "failed",  "claimed", "held",    "released",  "held",
                                             "held",    "removed", "removed"};
    const auto lines = take_log();
    ASSERT_EQ(lines.size(), events.size());
    for (std::size_t i = 0; i < events.size(); ++i) EXPECT_THAT(lines[i], StartsWith("3 " + events[i] + ": " + id));
    EXPECT_THAT(lines[4], testing::EndsWith("recipient=\"b\" size=7 who=\"runner\" reason=\"busy\""));
}

TEST_F(QueueConsumers, one_that_is_there_takes_over_from_one_that_dies) {
    submit();
    const OwnedConsumer consumer(MQOpenConsumer("next"));
    in_dying_child([] {
        MQEntry* entry = nullptr;
        MQClaim(MQOpenConsumer("victim"), nullptr, 0, 3600, &entry);
    });
    const OwnedEntry again = claim(consumer);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->recipients[0].attempts, 2);
}

TEST_F(QueueConsumers, a_message_that_is_damaged_is_held) {
    const std::string longer = submit({"longer"});
    const std::string elsewhere = submit({"elsewhere"});
    submit({"sound"});
    put_message(read(longer)->path, "longer than it was");
    put_message(path("same size"), "1234567");
    std::filesystem::remove(read(elsewhere)->path);
    std::filesystem::create_symlink(path("same size"), read(elsewhere)->path);
    const OwnedConsumer consumer(MQOpenConsumer("runner"));
    take_log();
    EXPECT_STREQ(claim(consumer)->recipients[0].address, "sound");
    EXPECT_THAT(take_log(), Contains(StartsWith("1 MQClaim: the message file is missing or has another size")));
    EXPECT_THAT(listed(MQ_HELD), ElementsAre("longer 4 1", "elsewhere 4 1"));
}

TEST_F(QueueConsumers, one_that_has_lost_its_file_claims_nothing) {
    submit();
    const OwnedConsumer consumer(MQOpenConsumer("lost"));
    std::filesystem::remove_all(path("queue/consumers"));
    MQEntry* entry = nullptr;
    EXPECT_EQ(MQClaim(consumer.get(), nullptr, 0, 60, &entry), -1);
    EXPECT_THAT(listed(), ElementsAre("ann@example.com 1 0"));
}

TEST_F(QueueConsumers, leaving_gives_everything_back) {
    submit({"a", "b"});
    OwnedConsumer consumer(MQOpenConsumer("one"));
    EXPECT_TRUE(claim(consumer));
    EXPECT_EQ(MQExtend(consumer.get(), "none", MQ_ALL, 5), 0);
    EXPECT_EQ(MQCloseConsumer(consumer.release()), 1);
    EXPECT_THAT(listed(MQ_WAITING), ElementsAre("a 1 1", "b 1 1"));
    EXPECT_TRUE(std::filesystem::is_empty(path("queue/consumers")));
}

}  // namespace
}  // namespace vel::test
