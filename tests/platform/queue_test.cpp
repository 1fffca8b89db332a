#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "vel/platform/log.h"
#include "vel/platform/queue.h"

namespace {

// Until the queue is built, a caller learns from each call and from the log that nothing was sent.
TEST(QueueStub, each_call_fails_and_says_so) {
    std::string lines;
    const LogCaptureSink sink = [](void* context, int level, const char* application, const char* text) {
        static_cast<std::string*>(context)->append(std::to_string(level)).append(application).append(text).append("|");
    };
    LogCaptureStart(sink, &lines);
    EXPECT_EQ(MQInit("host", "module"), 0);
    EXPECT_EQ(CreateMQEntry(), nullptr);
    EXPECT_EQ(GetMQPathName(nullptr, ".msg"), nullptr);
    EXPECT_EQ(InsertMQChannel(nullptr, "channel", 255), 0);
    EXPECT_EQ(PutMQEnvelope(nullptr, nullptr), 0);
    EXPECT_EQ(CloseMQEntry(nullptr), 0);
    EXPECT_EQ(DiscardMQEntry(nullptr), 0);
    LogCaptureStop();
    std::string expected;
    for (const std::string call : {"MQInit", "CreateMQEntry", "GetMQPathName", "InsertMQChannel", "PutMQEnvelope",
                                   "CloseMQEntry", "DiscardMQEntry"}) {
        expected += "1velmq" + call + ": this queue library takes no messages yet.|";
    }
    EXPECT_EQ(lines, expected);
}

}  // namespace
