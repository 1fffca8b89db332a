#include "tools/queue/entries.h"

#include <chrono>
#include <exception>
#include <utility>

#include "tools/queue/connection.h"
#include "vel/envelope.h"

namespace vel::command {
namespace {

// The queue's calls let no exception through.
struct Visit {
    const std::function<void(const MQEntry&)>& on_entry;
    std::exception_ptr thrown{};
};

int visit(void* context, const MQEntry* entry) {
    Visit& visit = *static_cast<Visit*>(context);
    try {
        visit.on_entry(*entry);
        return 1;
    } catch (...) {
        visit.thrown = std::current_exception();
        return 0;
    }
}

}  // namespace

std::string identifier_of(std::string_view name) {
    constexpr std::string_view kSuffix = ".msg";
    name.remove_prefix(name.rfind('/') + 1);
    if (name.ends_with(kSuffix)) name.remove_suffix(kSuffix.size());
    return std::string(name);
}

OwnedEntry read_entry(const std::string& id, Session& session) {
    MQEntry* entry = nullptr;
    const int found = MQReadEntry(id.c_str(), &entry);
    if (found < 0) throw queue_failure(session, id);
    if (found == 0) throw Failure(Exit::no_input, id + ": no such entry in the queue");
    return OwnedEntry(entry);
}

void for_each_entry(const Choice& choice, Session& session, const std::function<void(const MQEntry&)>& on_entry) {
    Visit state{on_entry};
    const char* const channel = choice.channel ? choice.channel->c_str() : nullptr;
    const int shown = MQListEntries(channel, choice.states, nullptr, visit, &state);
    if (state.thrown) std::rethrow_exception(state.thrown);
    if (shown < 0) throw queue_failure(session, "the queue cannot be listed");
}

int64_t now_in_microseconds() {
    const auto since = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(since).count();
}

const char* state_name(int state) {
    switch (state) {
        case MQ_WAITING: return "waiting";
        case MQ_CLAIMED: return "claimed";
        default: return "held";
    }
}

const char* return_name(int32_t type) {
    switch (type) {
        case VEL_RET_FULL: return "full";
        case VEL_RET_HDRS: return "hdrs";
        default: return nullptr;
    }
}

std::vector<const char*> notify_names(int32_t wishes) {
    constexpr std::pair<int32_t, const char*> kWishes[] = {{VEL_NOTIFY_NEVER, "never"},
                                                           {VEL_NOTIFY_SUCCESS, "success"},
                                                           {VEL_NOTIFY_FAILURE, "failure"},
                                                           {VEL_NOTIFY_DELAY, "delay"}};
    std::vector<const char*> names;
    for (const auto& [bit, name] : kWishes) {
        if (wishes & bit) names.push_back(name);
    }
    return names;
}

}  // namespace vel::command
