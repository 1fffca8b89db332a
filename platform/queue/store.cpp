#include "platform/queue/store.h"

#include <sys/stat.h>

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

bool has_tables(const Directory& directory) {
    struct stat status;
    return ::stat(directory.database().c_str(), &status) == 0 && status.st_size > 0;
}

// New tables would make every message look like what a dead process has left. Another process may be making the
// first ones now: then no message is there yet.
void require_tables(const Directory& directory) {
    if (has_tables(directory)) return;
    bool has_messages = false;
    directory.each_file(kMessageSuffix, [&](const std::string&) { has_messages = true; });
    if (has_messages && !has_tables(directory)) {
        throw QueueError("there are messages, but their tables are gone: " + directory.database());
    }
}

}  // namespace

Store::Store(std::string path) : directory_(std::move(path)) {
    require_tables(directory_);
    driver_ = std::make_unique<SqliteDriver>(directory_.database());
    directory_.sync();  // the database's name too
}

void connect() {
    guard_locks_at_fork();
    std::string path = queue_directory();
    const auto old = current_store();
    if (old && old->directory().path() == path && old->directory().is_there()) return;
    const std::lock_guard driver(driver_lock());  // No fork may come while an engine is opened.
    auto fresh = std::make_shared<Store>(std::move(path));
    const std::lock_guard lock(registry_lock());
    current().swap(fresh);
}

std::shared_ptr<Store> connected() {
    auto store = current_store();
    if (!store) throw QueueError("MQInit has not been called");
    return store;
}

}  // namespace vel
