#include <atomic>
#include <mutex>
#include <set>
#include <thread>

#include "tests/platform/queue/place.h"

namespace vel::test {
namespace {

constexpr int kThreads = 4;
constexpr int kEach = 12;

class QueueThreads : public QueuePlace {};

// Submitters and consumers side by side: each message arrives once.
TEST_F(QueueThreads, every_message_is_taken_once) {
    ASSERT_EQ(MQInit(nullptr, "threads"), 1);
    std::mutex guard;
    std::multiset<std::string> sent;
    std::multiset<std::string> taken;
    std::atomic<bool> all_sent = false;
    std::vector<std::thread> consumers;
    std::vector<std::thread> submitters;
    for (int i = 0; i < kThreads; ++i) {
        submitters.emplace_back([&] {
            for (int n = 0; n < kEach; ++n) {
                const std::string id = submit();
                const std::lock_guard lock(guard);
                sent.insert(id);
            }
        });
        consumers.emplace_back([&] {
            const OwnedConsumer consumer(MQOpenConsumer("taker"));
            for (;;) {
                const bool last = all_sent;
                const OwnedEntry entry = claim(consumer);
                if (!entry && last) return;
                if (!entry) continue;
                EXPECT_EQ(MQFinish(consumer.get(), entry->id, MQ_ALL), 1);
                const std::lock_guard lock(guard);
                taken.insert(entry->id);
            }
        });
    }
    for (std::thread& thread : submitters) thread.join();
    all_sent = true;
    for (std::thread& thread : consumers) thread.join();
    EXPECT_EQ(sent.size(), std::size_t{kThreads * kEach});
    EXPECT_EQ(sent.count(""), 0u);
    EXPECT_EQ(taken, sent);
    EXPECT_THAT(files(), testing::IsEmpty());
}

}  // namespace
}  // namespace vel::test
