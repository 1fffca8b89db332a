// A message's whole way: built, put into the real queue, claimed, taken apart.
#include <set>
#include <thread>

#include "tests/build/built.h"
#include "vel/japanese.h"
#include "vel/mime.h"
#include "vel/notify.h"
#include "vel/platform/queue.h"
#include "vel/rfc822.h"

namespace vel::test {
namespace {

using testing::ElementsAre;

struct ConsumerClosed {
    void operator()(MQConsumer* consumer) const { MQCloseConsumer(consumer); }
};

class JourneyTest : public BuildTest {
  protected:
    JourneyTest() {
        Init822Parser();
        std::filesystem::create_directory(directory() / "queue");
        set("Gateway", "QueueDirectory", (directory() / "queue").c_str());
        set("Queue", "MinimumFree", "0");
        set("Connection", "GatewayHostName", "gw");
        set("Connection", "GatewayDomain", "example.com");
        EXPECT_TRUE(MQInit(nullptr, "test"));
        consumer_.reset(MQOpenConsumer("test"));
    }

    ~JourneyTest() override { Terminate822Parser(); }

    // The next entry for a channel; null when there is none.
    std::unique_ptr<MQEntry, decltype(&MQFreeEntry)> claimed(const char* channel) {
        const char* const channels[] = {channel, nullptr};
        MQEntry* entry = nullptr;
        MQClaim(consumer_.get(), channels, 0, 60, &entry);
        return {entry, MQFreeEntry};
    }

    // The bodies of a message's leaves, in order.
    std::vector<std::string> bodies(const char* path) {
        mime_msg_pool* pool = nullptr;
        std::vector<std::string> texts;
        for (int i = 0, count = MimeParseMessage(path, 1, &pool); i < count; ++i) {
            MimeMsg* record = MimeGetMsg(pool, i);
            if (!record->boundary) texts.push_back(taken(MimeGetBody(record, 0, -1)));
        }
        MimeFreeMessage(&pool);
        return texts;
    }

    // The message files and locks in the queue.
    std::size_t files() const {
        std::size_t count = 0;
        for (const auto& file : std::filesystem::recursive_directory_iterator(directory() / "queue")) {
            count += file.path().extension() == ".msg" || file.path().extension() == ".lck";
        }
        return count;
    }

    std::unique_ptr<MQConsumer, ConsumerClosed> consumer_;
};

TEST_F(JourneyTest, what_is_built_and_sent_arrives_as_the_same_bytes) {
    std::string binary(std::size_t{4} << 20, '\0');
    Random random(1);
    for (char& byte : binary) byte = static_cast<char>(random.below(256));
    const std::string text = "Hello\r\n#Fine\r\nFrom me\r\n", japanese = "\x93\xfa\x96\x7b\r\n";
    const auto part = [this](const char* type, const char* parameter, const char* encoding, const std::string& body) {
        return MimeBuildMessage(nullptr, nullptr, nullptr, nullptr, type, "x", Chain(parameter), encoding, nullptr,
                                nullptr, file("body", body).c_str(), nullptr, 0);
    };
    char* const parts[] = {part("text", nullptr, "7bit", text), part("image", "name=a b.png", nullptr, binary),
                           part("text", "charset=ISO-2022-JP", "7bit", japanese), nullptr};
    char* message = MimeBuildMultipartMessage("me@example.com", Chain("joe"), "All of it", nullptr, parts, nullptr,
                                              nullptr, nullptr, 0);
    for (char* path : {parts[0], parts[1], parts[2]}) MimeFreeFile(path);
    const _envRecip recipients[] = {{"joe", nullptr, VEL_NOTIFY_NEVER, nullptr, nullptr}};
    char* id = MimeSendMessage("Me <me@example.com>", "env", VEL_RET_HDRS, 0, nullptr, "smtp", recipients, 1, nullptr,
                               message, 0, 0, 0);
    ASSERT_NE(id, nullptr);
    MimeFreeFile(message);

    EXPECT_EQ(claimed("other"), nullptr);
    const auto entry = claimed("smtp");
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(std::string(id) + ".msg", entry->path);
    EXPECT_STREQ(entry->sender.address, "me@example.com");
    EXPECT_STREQ(entry->sender.envelopeId, "env");
    EXPECT_EQ(entry->sender.returnType, VEL_RET_HDRS);
    ASSERT_EQ(entry->recipientCount, 1);
    EXPECT_STREQ(entry->recipients[0].address, "joe@gw.example.com");
    EXPECT_EQ(entry->recipients[0].notify, VEL_NOTIFY_NEVER);

    std::vector<std::string> arrived = bodies(entry->path);
    ASSERT_EQ(arrived.size(), 3u);
    const std::string line_end = "\r\n";  // That before a delimiter belongs to a text for the parser.
    EXPECT_EQ(arrived[0], text + line_end);
    EXPECT_TRUE(arrived[1] == binary);
    char* converted = bufJIS2ShiftJIS_wmc(arrived[2].c_str());
    EXPECT_EQ(converted, japanese + line_end);
    std::free(converted);

    EXPECT_EQ(files(), 2u);
    ReleaseQueueId(id);
    EXPECT_EQ(MQFinish(consumer_.get(), entry->id, MQ_ALL), 1);
    EXPECT_EQ(files(), 0u);
    take_log();
}

TEST_F(JourneyTest, notices_about_a_queued_message_arrive) {
    const _envRecip ann{"ann@x.y", nullptr, 0, nullptr, nullptr};
    char* id = MimeSendMessage("joe@x.y", nullptr, 0, 0, nullptr, "smtp", &ann, 1, nullptr,
                               file("message", "Subject: s\r\n\r\nbody\r\n").c_str(), 0, 0, 1);
    const auto original = claimed("smtp");
    ASSERT_NE(original, nullptr);
    PerRecipField field;
    AssignPerRecipField(&field, nullptr, "ann@x.y", "failed", "5.1.1", nullptr, nullptr, 0, 0);
    const PerRecipChain recipients{&field, nullptr};
    const DSNEnvelope envelope{original->sender.address, "", VEL_RET_FULL, 0, 0};
    EXPECT_EQ(BounceMimeMessage(id, &original->sender, Chain("why"), 0, nullptr), 0);
    EXPECT_EQ(GenerateDSNMessage(id, &envelope, "s", Chain("It failed.\r\n"), &recipients), 0);
    CleanPerRecipField(&field);
    ReleaseQueueId(id);

    const auto bounce = claimed("DSN"), report = claimed("DSN");
    ASSERT_NE(report, nullptr);
    EXPECT_STREQ(bounce->sender.address, "postmaster@gw.example.com");
    EXPECT_STREQ(report->sender.address, "<>");
    for (const auto& notice : {bounce.get(), report.get()}) EXPECT_STREQ(notice->recipients[0].address, "joe@x.y");
    const std::string body = "body\r\n\r\n";  // With the line end before the delimiter.
    EXPECT_THAT(bodies(bounce->path), ElementsAre(testing::HasSubstr("\r\n\r\nwhy\r\nThe original"), body));
    EXPECT_THAT(bodies(report->path),
                ElementsAre("It failed.\r\n\r\n", testing::HasSubstr("\r\nAction: failed\r\n"), body));
    take_log();
}

TEST_F(JourneyTest, what_is_refused_is_nowhere_in_the_queue) {
    EXPECT_EQ(MimeSendMessage("me", nullptr, 0, 0, nullptr, "", nullptr, 0, nullptr,
                              file("message", "A: b\r\n").c_str(), 0, 0, 0),
              nullptr)
        << "no channel";
    EXPECT_EQ(MimeSendMessage("me", nullptr, 0, 0, nullptr, "smtp", nullptr, 0, nullptr, "none", 0, 0, 0), nullptr);
    MQContext* context = VELGetNewMQEntry();
    const _envFrom sender{"me", "", 0, 0, "", ""};
    char* id = VELGetNewMQId(context);
    EXPECT_EQ(SubmitMQMessage(context, &sender, nullptr, "smtp"), 0) << "no message";
    ReleaseQueueId(id);
    EXPECT_EQ(files(), 0u);
    take_log();
}

TEST_F(JourneyTest, an_entry_of_the_caller_arrives) {
    MQContext* context = VELGetNewMQEntry();
    char* id = VELGetNewMQId(context);
    const int handle = filecreate((std::string(id) + ".msg").c_str(), 2, 1);
    putline(handle, "A: b\r\n\r\nbody\r\n");
    fileclose(handle);
    const _envFrom sender{"me", "", 0, 7, "", ""};
    const _envRecip joe{"joe", "", 0, "", ""};
    const EnvRecipChain recipients{&joe, nullptr};
    EXPECT_NE(SubmitMQMessage(context, &sender, &recipients, "local"), 0);
    ReleaseQueueId(id);
    const auto entry = claimed("local");
    ASSERT_NE(entry, nullptr);
    EXPECT_STREQ(entry->recipients[0].address, "joe");
    EXPECT_EQ(entry->sender.number, 7);
    EXPECT_THAT(bodies(entry->path), ElementsAre("body\r\n"));
    take_log();
}

class JourneyThreads : public JourneyTest {};

TEST_F(JourneyThreads, messages_that_are_sent_at_once_all_arrive) {
    constexpr int kThreads = 4, kMessages = 5;
    const std::string path = file("message", "Date: 1 Feb 1999 10:20 EST\r\n\r\nbody\r\n");
    const _envRecip joe{"joe", nullptr, 0, nullptr, nullptr};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            const QuietLog quiet;
            for (int i = 0; i < kMessages; ++i) {
                ReleaseQueueId(
                    MimeSendMessage("me", nullptr, 0, 0, nullptr, "smtp", &joe, 1, nullptr, path.c_str(), 0, 0, 0));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::set<std::string> sizes, ids;
    while (const auto entry = claimed("smtp")) {
        ids.insert(entry->id);
        sizes.insert(std::to_string(content(entry->path).size()));
        MQFinish(consumer_.get(), entry->id, MQ_ALL);
    }
    EXPECT_EQ(ids.size(), std::size_t{kThreads * kMessages});
    EXPECT_EQ(sizes.size(), 1u);
    EXPECT_EQ(files(), 0u);
    take_log();
}

}  // namespace
}  // namespace vel::test
