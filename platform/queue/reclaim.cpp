#include "platform/queue/reclaim.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "platform/queue/identifier.h"
#include "platform/queue/owned_file.h"
#include "platform/queue/report.h"

namespace vel {
namespace {

// A message lock that somebody still wants is younger.
constexpr int64_t kStaleSeconds = 24 * 60 * 60;

// How many identifiers are read, and how many files locked, in one go.
constexpr std::size_t kPage = 10'000;
constexpr std::ptrdiff_t kBatch = 100;

std::vector<std::string> message_files(const Directory& directory) {
    std::vector<std::string> ids;
    directory.each_file(kMessageSuffix, [&](const std::string& id) { ids.push_back(id); });
    std::sort(ids.begin(), ids.end());
    return ids;
}

// Of the identifiers, which are in order, those that have no rows.
std::vector<std::string> without_rows(Store& store, const std::vector<std::string>& ids) {
    std::vector<std::string> without;
    auto next = ids.begin();
    for (std::string after; next != ids.end();) {
        const auto page = store.ask([&](Driver& driver) { return driver.identifiers(after, kPage); });
        const auto end = page.empty() ? ids.end() : std::upper_bound(next, ids.end(), page.back());
        std::set_difference(next, end, page.begin(), page.end(), std::back_inserter(without));
        next = end;
        if (!page.empty()) after = page.back();
    }
    return without;
}

// A maker commits before it gives its lock up: so the rows are looked for when the lock is here, not before.
Descriptor take_abandoned(Store& store, const std::string& id) {
    Descriptor lock = take_ownerless(store.directory().message(id));
    if (lock && store.ask([&](Driver& driver) { return driver.has(id); })) return Descriptor();
    return lock;
}

// Removes files behind a seal: no commit that has failed brings the rows of one back. The locks are held meanwhile.
std::size_t remove_sealed(Store& store, const std::vector<std::string>& ids) {
    std::vector<std::pair<std::string, Descriptor>> taken;
    for (const std::string& id : ids) {
        if (Descriptor lock = take_abandoned(store, id))
            taken.emplace_back(store.directory().base(id), std::move(lock));
    }
    if (taken.empty()) return 0;
    store.ask([](Driver& driver) { driver.seal(); });
    return static_cast<std::size_t>(
        std::count_if(taken.begin(), taken.end(), [](const auto& file) { return remove_files(file.first); }));
}

std::size_t reclaim_open(Store& store) {
    const auto ids = without_rows(store, message_files(store.directory()));
    std::size_t count = 0;
    for (auto next = ids.begin(); next != ids.end();) {
        const auto end = next + std::min(kBatch, ids.end() - next);
        count += remove_sealed(store, {next, end});
        next = end;
    }
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

std::vector<std::string> abandoned(Store& store) {
    auto ids = without_rows(store, message_files(store.directory()));
    std::erase_if(ids, [&](const std::string& id) { return !take_abandoned(store, id); });
    return ids;
}

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
