#include "platform/queue/reclaim.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "platform/queue/identifier.h"
#include "platform/queue/owned_file.h"
#include "platform/queue/report.h"

namespace vel {
namespace {

// A message lock that somebody still wants is younger.
constexpr int64_t kStaleSeconds = 24 * 60 * 60;

bool is_committed(Store& store, const std::string& id) {
    return store.ask([&](Driver& driver) { return driver.has(id); });
}

// A maker commits before it gives its lock up: so the rows are looked for when the lock is here, not before.
Descriptor take_abandoned(Store& store, const std::string& id) {
    if (is_committed(store, id)) return Descriptor();  // as most are
    Descriptor lock = take_ownerless(store.directory().message(id));
    if (lock && is_committed(store, id)) return Descriptor();
    return lock;
}

std::size_t reclaim_open(Store& store) {
    std::size_t count = 0;
    store.directory().each_file(kMessageSuffix, [&](const std::string& id) {
        const Descriptor lock = take_abandoned(store, id);
        if (!lock) return;
        if (count == 0) store.ask([](Driver& driver) { driver.seal(); });
        if (remove_files(store.directory().base(id))) ++count;
    });
    return count;
}

// A message file is made before its lock and removed after it.
void sweep_locks(Store& store) {
    store.directory().each_file(kLockSuffix, [&](const std::string& id) {
        const std::string base = store.directory().base(id);
        if (is_stale_lock(base)) ::unlink((base + std::string(kLockSuffix)).c_str());
    });
}

void sweep_consumers(Store& store) {
    store.directory().each_consumer([&](const std::string& id) {
        const std::string path = store.directory().consumer(id);
        const Descriptor lock = take_ownerless(path);
        if (!lock) return;
        store.ask([&](Driver& driver) { driver.take_back(id, now()); });
        ::unlink(path.c_str());
    });
}

// A consumer's file is made before its first claim, so where none is, nobody lives.
bool is_dead(const Store& store, const std::string& consumer) {
    const std::string path = store.directory().consumer(consumer);
    return take_ownerless(path) || (::access(path.c_str(), F_OK) != 0 && errno == ENOENT);
}

}  // namespace

bool is_abandoned(Store& store, const std::string& id) { return static_cast<bool>(take_abandoned(store, id)); }

bool is_stale_lock(const std::string& base) {
    struct stat status;
    if (::lstat((base + std::string(kMessageSuffix)).c_str(), &status) != 0) return errno == ENOENT;
    if (::lstat((base + std::string(kLockSuffix)).c_str(), &status) != 0) return false;
    return now() / 1'000'000 - int64_t{status.st_mtime} > kStaleSeconds;
}

std::size_t reclaim(Store& store) {
    take_back_claims(store);
    sweep_consumers(store);
    const std::size_t count = reclaim_open(store);
    sweep_locks(store);
    return count;
}

void take_back_claims(Store& store) {
    const auto claimants = store.ask([](Driver& driver) { return driver.claimants(); });
    for (const std::string& consumer : claimants) {
        if (is_dead(store, consumer)) store.ask([&](Driver& driver) { driver.take_back(consumer, now()); });
    }
}

}  // namespace vel
