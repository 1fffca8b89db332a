// A queue into which the command sends, and what the test finds there.
#ifndef VEL_TESTS_TOOLS_SENDING_PLACE_H
#define VEL_TESTS_TOOLS_SENDING_PLACE_H

#include "tests/tools/queue_place.h"

namespace vel::test {

class SendingTest : public QueueCommandTest {
  protected:
    // Sends a message; its identifier.
    std::string queued(std::vector<std::string> options) const {
        options.insert(options.begin(), {"send", "-", "--to", "ann@x.y"});
        const Ended sent = run(options, "Subject: s\n\nbody\n");
        EXPECT_EQ(sent.exit, 0) << sent.err;
        return sent.out.substr(0, sent.out.find('\n'));
    }

    // What the command says, and then "CHANNEL RECIPIENT: " and the message for each entry that it makes.
    std::string told(const std::vector<std::string>& arguments, const std::string& standard_input = "") const {
        const std::vector<std::string> before = ids();
        const Ended ended = run(arguments, standard_input);
        std::string text = ended.exit == 0 ? ended.out : std::to_string(ended.exit) + " " + ended.err;
        for (const std::string& id : ids()) {
            if (std::find(before.begin(), before.end(), id) != before.end()) continue;
            const OwnedEntry made = entry(id);
            text.append(made->channel).append(" ").append(made->recipients[0].address).append(": ");
            text.append(content(made->path));
        }
        return text;
    }

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
