// A queue of the test's own, which it fills itself and the command works on.
#ifndef VEL_TESTS_TOOLS_QUEUE_PLACE_H
#define VEL_TESTS_TOOLS_QUEUE_PLACE_H

#include <string>
#include <vector>

#include "tests/platform/queue/place.h"
#include "tests/tools/run_vel.h"

namespace vel::test {

class QueueCommandTest : public CommandTest {
  protected:
    QueueCommandTest() {
        std::filesystem::create_directory(directory() / "queue");
        configure("");
        set("Gateway", "QueueDirectory", (directory() / "queue").c_str());
        set("Queue", "MinimumFree", "0");
        EXPECT_TRUE(MQInit(nullptr, "test"));
    }
    ~QueueCommandTest() override { take_log(); }

    // Lines of section [Queue] for the command, and perhaps other sections; of equal keys the first one counts.
    void configure(const std::string& queue) const {
        file("ostra.ini", "[Gateway]\nTimeZone=UTC\nQueueDirectory=" + (directory() / "queue").string() +
                              "\n[Connection]\nGatewayHostName=gw\nGatewayDomain=corp\n[Queue]\n" + queue +
                              "\n[Queue]\nMinimumFree=0\n[Log]\nLevels=1\n");
    }

    // The message file of an entry.
    static std::string read_path(const std::string& id) {
        MQEntry* entry = nullptr;
        EXPECT_EQ(MQReadEntry(id.c_str(), &entry), 1);
        const OwnedEntry owner(entry);
        return entry ? entry->path : "";
    }

    // What is in the queue, as "address state attempts reason", recipient by recipient.
    static std::vector<std::string> listed() {
        std::vector<std::string> lines;
        const MQEntryVisitor visit = [](void* context, const MQEntry* entry) {
            for (int i = 0; i < entry->recipientCount; ++i) {
                const MQRecipient& recipient = entry->recipients[i];
                const char* const state = recipient.state == MQ_HELD      ? " held "
                                          : recipient.state == MQ_CLAIMED ? " claimed "
                                                                          : " waiting ";
                static_cast<std::vector<std::string>*>(context)->push_back(
                    recipient.address + (state + std::to_string(recipient.attempts)) + " " + recipient.reason);
            }
            return 1;
        };
        EXPECT_GE(MQListEntries(nullptr, 0, nullptr, visit, &lines), 0);
        return lines;
    }
};

}  // namespace vel::test

#endif
