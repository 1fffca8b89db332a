#include "platform/queue/store.h"

#include "platform/queue/report.h"
#include "platform/queue/settings.h"
#include "platform/queue/sqlite_driver.h"

namespace vel {
namespace {

// Never taken down: another thread may be at work when the process ends.
std::shared_ptr<Store>& current() {
    static auto* const store = new std::shared_ptr<Store>();
    return *store;
}

std::shared_ptr<Store> current_store() {
    const std::lock_guard lock(registry_lock());
    return current();
}

}  // namespace

Store::Store(std::string path)
    : directory_(std::move(path)), driver_(std::make_unique<SqliteDriver>(directory_.database())) {
    directory_.sync();  // the database's name too
}

void connect() {
    guard_locks_at_fork();
    std::string path = queue_directory();
    const auto old = current_store();
    if (old && old->directory().path() == path && old->directory().is_there()) return;
    auto fresh = std::make_shared<Store>(std::move(path));
    const std::lock_guard lock(registry_lock());
    current() = std::move(fresh);
}

std::shared_ptr<Store> connected() {
    auto store = current_store();
    if (!store) throw QueueError("MQInit has not been called");
    return store;
}

}  // namespace vel
