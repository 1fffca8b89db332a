// What the tests of the queue stand on: a queue of their own, and an entry in a line.
#ifndef VEL_TESTS_PLATFORM_QUEUE_PLACE_H
#define VEL_TESTS_PLATFORM_QUEUE_PLACE_H

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/platform/scratch.h"
#include "vel/platform/log.h"
#include "vel/platform/queue.h"

namespace vel::test {

struct FreeEntry {
    void operator()(MQEntry* entry) const { MQFreeEntry(entry); }
};
using OwnedEntry = std::unique_ptr<MQEntry, FreeEntry>;

struct CloseConsumer {
    void operator()(MQConsumer* consumer) const { MQCloseConsumer(consumer); }
};
using OwnedConsumer = std::unique_ptr<MQConsumer, CloseConsumer>;

// An envelope with its records.
class TestEnvelope {
  public:
    explicit TestEnvelope(const std::vector<std::string>& recipients)
        : addresses_(recipients.begin(), recipients.end()) {
        envelope_.senders.Add(&sender_);
        for (const std::string& address : addresses_) {
            recipients_.push_back({address.c_str(), "", 0, "", ""});
            envelope_.recipients.Add(&recipients_.back());
        }
    }
    stEnvelope* get() { return &envelope_; }

  private:
    std::deque<std::string> addresses_;
    _envFrom sender_{"joe@example.com", "", 0, 0, "", "smtp"};
    std::deque<_envRecip> recipients_;
    stEnvelope envelope_;
};

inline void put_message(const std::string& path, std::string_view text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    out.flush();
}

// Submits a message; returns its identifier, empty when that fails.
inline std::string submit(const std::vector<std::string>& recipients = {"ann@example.com"},
                          const char* channel = "smtp", std::string_view text = "Hello\r\n") {
    MQContext* const context = CreateMQEntry();
    if (!context) return "";
    const std::string base = GetMQPathName(context, "");
    put_message(GetMQPathName(context, ".msg"), text);
    TestEnvelope envelope(recipients);
    InsertMQChannel(context, channel, 255);
    PutMQEnvelope(context, envelope.get());
    if (!CloseMQEntry(context)) return "";
    std::filesystem::remove(base + ".lck");
    return base.substr(base.rfind('/') + 1);
}

// A queue below the scratch directory; captures the thread's log.
class QueuePlace : public Scratch {
  protected:
    QueuePlace() {
        std::filesystem::create_directory(path("queue"));
        configure("[Gateway]\nQueueDirectory=" + path("queue") + "\n[Queue]\nMinimumFree=0\n[Log]\nLevels=1\n");
        LogCaptureStart(capture, this);
    }
    ~QueuePlace() override { LogCaptureStop(); }

    // The lines since the last call.
    std::vector<std::string> take_log() { return std::exchange(log_, {}); }

    // The message files and locks in the queue.
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& file : std::filesystem::recursive_directory_iterator(path("queue"))) {
            const auto extension = file.path().extension();
            if (extension == ".msg" || extension == ".lck") names.push_back(file.path().filename());
        }
        return names;
    }

    // What is in the queue, as "address state attempts", entry by entry.
    static std::vector<std::string> listed(int states = 0, const char* channel = nullptr) {
        std::vector<std::string> lines;
        const MQEntryVisitor visit = [](void* context, const MQEntry* entry) {
            auto& to = *static_cast<std::vector<std::string>*>(context);
            for (int i = 0; i < entry->recipientCount; ++i) {
                const MQRecipient& recipient = entry->recipients[i];
                to.push_back(std::string(recipient.address) + " " + std::to_string(recipient.state) + " " +
                             std::to_string(recipient.attempts));
            }
            return 1;
        };
        EXPECT_GE(MQListEntries(channel, states, nullptr, visit, &lines), 0);
        return lines;
    }

    static OwnedEntry read(const std::string& id) {
        MQEntry* entry = nullptr;
        EXPECT_EQ(MQReadEntry(id.c_str(), &entry), 1);
        return OwnedEntry(entry);
    }

    static OwnedEntry claim(const OwnedConsumer& consumer, int limit = 0, int lease = 60) {
        MQEntry* entry = nullptr;
        EXPECT_GE(MQClaim(consumer.get(), nullptr, limit, lease, &entry), 0);
        return OwnedEntry(entry);
    }

  private:
    static void capture(void* self, int level, const char*, const char* text) {
        static_cast<QueuePlace*>(self)->log_.push_back(std::to_string(level) + " " + text);
    }

    std::vector<std::string> log_;
};

// One that the process is connected to.
class StartedQueue : public QueuePlace {
  protected:
    StartedQueue() { EXPECT_EQ(MQInit("host", "module"), 1); }

    // Runs body in a child process, which then dies as by a crash.
    template <class Body>
    static void in_dying_child(Body&& body) {
        const pid_t child = ::fork();
        if (child == 0) {
            body();
            ::raise(SIGKILL);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    }
};

}  // namespace vel::test

#endif
