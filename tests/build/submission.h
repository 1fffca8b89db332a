// Sending messages to the queue's double.
#ifndef VEL_TESTS_BUILD_SUBMISSION_H
#define VEL_TESTS_BUILD_SUBMISSION_H

#include <ctime>
#include <string>
#include <vector>

#include "tests/build/built.h"
#include "tests/build/queue_double.h"
#include "vel/frame.h"
#include "vel/rfc822.h"

namespace vel::test {

// What the queue is told when all goes well, and when it refuses the envelope.
constexpr const char* kWhole = "create path insert out 255 put close ";
constexpr const char* kGivenUp = "create path insert out 255 put discard ";

inline _envRecip to(const char* address) { return {address, nullptr, 0, nullptr, nullptr}; }

struct Send {
    const char* sender = "me@x.y";
    const char* envelope_id = nullptr;
    int return_type = 0;
    const char* text = nullptr;
    std::vector<_envRecip> recipients{};
    const char* date = nullptr;
    int wants_receipt = 0;
    int no_mime_version = 0;
};

class SubmissionTest : public BuildTest {
  protected:
    SubmissionTest() {
        Init822Parser();
        queue_.base = (directory() / "0entry1").string();
        queue = &queue_;
    }
    ~SubmissionTest() override {
        queue = nullptr;
        Terminate822Parser();
    }

    char* send_file(const Send& send, const std::string& path) {
        queue_.calls = queue_.envelope = "";
        const Starved starved(granted_, refused_);
        return MimeSendMessage(send.sender, send.envelope_id, send.return_type, 9, send.text, "out",
                               send.recipients.data(), static_cast<int>(send.recipients.size()), send.date,
                               path.c_str(), 9, send.wants_receipt, send.no_mime_version);
    }

    // The trace's text, and that of a date line, which does without daylight saving time.
    static std::vector<std::string> texts_of(std::time_t time) {
        char trace[64], line[64], ctime[26];
        UTCtime* utc = nullptr;
        time_t2rfc822date(time, trace);
        ctime2UTC(::ctime_r(&time, ctime), &utc);
        UTC2rfc(utc, line);
        std::free(utc);
        return {trace, line};
    }

    // Sends a message, and returns what the queue got, with "NOW" for the current time.
    std::string sent(const Send& send, std::string_view message) {
        const std::time_t before = std::time(nullptr);
        char* identifier = send_file(send, file("message", message));
        EXPECT_EQ(queue_.calls, kWhole);
        EXPECT_STREQ(identifier, queue_.base.c_str());
        EXPECT_THAT(left_behind("0entry1"), testing::UnorderedElementsAre("0entry1.msg", "0entry1.lck"));
        ReleaseQueueId(identifier);
        std::string text = content(queue_.base + ".msg");
        for (std::time_t time = before; time <= std::time(nullptr); ++time) {
            for (const std::string& now : texts_of(time)) text = replaced(text, now, "NOW");
        }
        return text;
    }

    // What a call that fails leaves of the queue's calls; it leaves no file.
    std::string refused(const std::string& path) {
        EXPECT_EQ(send_file({}, path), nullptr);
        EXPECT_THAT(left_behind("0entry1"), testing::IsEmpty());
        return queue_.calls;
    }

    Queue queue_;
};

}  // namespace vel::test

#endif
