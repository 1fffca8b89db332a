// A queue into which the command sends, and what the test finds there.
#ifndef VEL_TESTS_TOOLS_SENDING_PLACE_H
#define VEL_TESTS_TOOLS_SENDING_PLACE_H

#include "tests/tools/queue_place.h"

namespace vel::test {

class SendingTest : public QueueCommandTest {
  protected:
    // Null when there is no such entry.
    static OwnedEntry entry(const std::string& id) {
        MQEntry* found = nullptr;
        EXPECT_GE(MQReadEntry(id.c_str(), &found), 0);
        return OwnedEntry(found);
    }

    static std::vector<std::string> ids() {
        std::vector<std::string> ids;
        const MQEntryVisitor visit = [](void* context, const MQEntry* entry) {
            static_cast<std::vector<std::string>*>(context)->emplace_back(entry->id);
            return 1;
        };
        EXPECT_GE(MQListEntries(nullptr, 0, nullptr, visit, &ids), 0);
        return ids;
    }

    // The message files and locks in the queue.
    std::size_t files() const {
        std::size_t count = 0;
        for (const auto& file : std::filesystem::recursive_directory_iterator(directory() / "queue")) {
            count += file.path().extension() == ".msg" || file.path().extension() == ".lck";
        }
        return count;
    }
};

}  // namespace vel::test

#endif
