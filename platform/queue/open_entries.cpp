#include "platform/queue/open_entries.h"

#include <cstdint>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "platform/queue/process_locks.h"
#include "platform/queue/report.h"

namespace vel {
namespace {

struct Registry {
    std::unordered_map<MQContext*, std::unique_ptr<OpenEntry>> entries;
    uintptr_t last = 0;
};

// Never taken down: another thread may be at work when the process ends.
Registry& registry() {
    static auto* const registry = new Registry();
    return *registry;
}

// Only while the registry is locked.
std::unique_ptr<OpenEntry>& slot(MQContext* context) {
    const auto found = registry().entries.find(context);
    if (found == registry().entries.end() || !found->second->is_ours()) throw QueueError("no such entry is open");
    return found->second;
}

}  // namespace

MQContext* remember(std::unique_ptr<OpenEntry> entry) {
    const std::lock_guard lock(registry_lock());
    auto* const context = reinterpret_cast<MQContext*>(++registry().last);
    try {
        registry().entries[context].swap(entry);
    } catch (const std::exception&) {
        entry->discard();
        throw;
    }
    return context;
}

OpenEntry& open_entry(MQContext* context) {
    const std::lock_guard lock(registry_lock());
    return *slot(context);
}

std::unique_ptr<OpenEntry> take_open_entry(MQContext* context) {
    const std::lock_guard lock(registry_lock());
    auto entry = std::move(slot(context));
    registry().entries.erase(context);
    return entry;
}

}  // namespace vel
