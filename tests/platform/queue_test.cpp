#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vel/platform/log.h"
#include "vel/platform/queue.h"

namespace {

// Until the queue is built, a caller learns from each call and from the log that nothing was sent.
TEST(QueueStub, each_call_fails_and_says_so) {
    std::vector<std::string> lines;
    LogCaptureStart(
        [](void* context, int level, const char* application, const char* text) {
            static_cast<std::vector<std::string>*>(context)->push_back(std::to_string(level) + application + " " +
                                                                       text);
        },
        &lines);
    EXPECT_EQ(MQInit("host", "module"), 0);
    EXPECT_EQ(CreateMQEntry(), nullptr);
    EXPECT_EQ(GetMQPathName(nullptr, ".msg"), nullptr);
    EXPECT_EQ(InsertMQChannel(nullptr, "channel", 255), 0);
    EXPECT_EQ(PutMQEnvelope(nullptr, nullptr), 0);
    EXPECT_EQ(CloseMQEntry(nullptr), 0);
    EXPECT_EQ(DiscardMQEntry(nullptr), 0);
    LogCaptureStop();
    std::vector<std::string> expected;
    for (const char* call : {"MQInit", "CreateMQEntry", "GetMQPathName", "InsertMQChannel", "PutMQEnvelope",
                             "CloseMQEntry", "DiscardMQEntry"}) {
        expected.push_back(std::string("1velmq ") + call + ": this queue library takes no messages yet.");
    }
    EXPECT_EQ(lines, expected);
}

}  // namespace
