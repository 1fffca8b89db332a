// Entries of the queue, for people and for programs.
#ifndef VEL_TOOLS_QUEUE_ENTRIES_H
#define VEL_TOOLS_QUEUE_ENTRIES_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/io/session.h"
#include "tools/text/json_line.h"
#include "vel/platform/queue.h"

namespace vel::command {

struct EntryFreed {
    void operator()(MQEntry* entry) const { MQFreeEntry(entry); }
};
using OwnedEntry = std::unique_ptr<MQEntry, EntryFreed>;

inline std::span<const MQRecipient> recipients_of(const MQEntry& entry) {
    return {entry.recipients, static_cast<std::size_t>(entry.recipientCount)};
}

// What an operator calls an entry: its identifier, its base path or the path of its message.
std::string identifier_of(std::string_view name);

// Throws Failure: no input when there is no such entry.
OwnedEntry read_entry(const std::string& id, Session& session);

// Which recipients are meant.
struct Choice {
    std::optional<std::string> channel;  // nothing: all
    int states = 0;                      // bits; 0: all
};

// Calls on_entry for each entry with its recipients that are meant, in the order of their arrival. Throws Failure,
// and what on_entry throws.
void for_each_entry(const Choice& choice, Session& session, const std::function<void(const MQEntry&)>& on_entry);

constexpr int64_t kMicroseconds = 1'000'000;
int64_t now_in_microseconds();

// "waiting", "claimed", "held"
const char* state_name(int state);

// RET and NOTIFY in their own words: "full", "hdrs" or null; "never", "success", "failure", "delay".
const char* return_name(int32_t type);
std::vector<const char*> notify_names(int32_t wishes);

// {"utc": "1999-02-01T15:20:30Z", "seconds_since_1970": 917882430}
Json time_json(int64_t microseconds);

// The whole envelope, with the members that kAboutEntryJson tells of.
Json entry_json(const MQEntry& entry);
extern const char* const kAboutEntryJson;

}  // namespace vel::command

#endif
