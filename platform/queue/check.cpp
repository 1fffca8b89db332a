#include "platform/queue/check.h"

#include <sys/stat.h>

#include <cerrno>
#include <vector>

#include "platform/queue/reclaim.h"
#include "platform/queue/report.h"
#include "platform/queue/settle.h"

namespace vel {
namespace {

// How many entries are looked at in one go.
constexpr std::size_t kPage = 100;

void check_files(Store& store, const Finding& tell) {
    const Directory& directory = store.directory();
    for (const std::string& id : abandoned(store)) tell(id, "a message file without its entry");
    directory.each_file(kLockSuffix, [&](const std::string& id) {
        if (is_stale_lock(directory.base(id))) tell(id, "a stale message lock");
    });
}

// A file that is not there may just have gone with its entry: so the rows are looked for once more.
bool is_damaged(Store& store, const Entry& entry) {
    return !is_sound(store.directory(), entry) && store.ask([&](Driver& driver) { return driver.has(entry.id); });
}

void check_entries(Store& store, bool repair, const Finding& tell) {
    ListFilter filter;
    for (;;) {
        const auto page = store.ask([&](Driver& driver) { return driver.list(filter, kPage); });
        if (page.empty()) return;
        filter.after = page.back().id;
        for (const Entry& entry : page) {
            if (!is_damaged(store, entry)) continue;
            tell(entry.id, kDamaged);
            if (repair) settle(store, Selection{entry.id, MQ_ALL, MQ_WAITING}, Outcome::held(kDamaged), "check");
        }
    }
}

}  // namespace

bool is_sound(const Directory& directory, const Entry& entry) {
    struct stat status;
    const std::string path = directory.message(entry.id);
    if (::lstat(path.c_str(), &status) == 0) return S_ISREG(status.st_mode) && status.st_size == entry.size;
    if (errno != ENOENT && errno != ENOTDIR) throw QueueError::of_system("cannot use", path);
    return false;
}

void check(Store& store, bool repair, const Finding& tell) {
    for (const std::string& fault : store.ask([](Driver& driver) { return driver.faults(); })) tell("", fault);
    check_files(store, tell);
    check_entries(store, repair, tell);
    if (repair) reclaim(store);
}

}  // namespace vel
