#include "platform/queue/group_commit.h"

#include <unistd.h>

#include <mutex>
#include <string>

#include "platform/queue/process_locks.h"
#include "platform/queue/report.h"

namespace vel {
namespace {

// Whether a failed commit has taken place after all. If it has not, it never will.
bool took_place(Driver& driver, const std::string& id, bool& in_doubt) {
    if (driver.has(id)) return true;
    if (in_doubt) driver.seal();
    in_doubt = false;
    return false;
}

}  // namespace

void GroupCommit::commit(Driver& driver, const Entry& entry) {
    Waiting mine{&entry, false, nullptr};
    {
        const std::lock_guard lock(pending_lock());
        pending_.push_back({::getpid(), &mine});
    }
    {
        const std::lock_guard lock(driver_lock());
        if (!mine.done) commit_all(driver, take_pending());
    }
    if (mine.failure) std::rethrow_exception(mine.failure);
}

std::vector<GroupCommit::Place> GroupCommit::take_pending() noexcept {
    std::vector<Place> group;
    const std::lock_guard lock(pending_lock());
    group.swap(pending_);
    std::erase_if(group, [](const Place& place) { return place.process != ::getpid(); });
    return group;
}

// One that cannot be committed must not take the others with it.
void GroupCommit::commit_all(Driver& driver, const std::vector<Place>& group) noexcept {
    bool in_doubt = false;
    const bool together = group.size() > 1 && commit_together(driver, group, in_doubt);
    for (const Place& place : group) {
        if (!together) commit_alone(driver, *place.waiting, in_doubt);
        place.waiting->done = true;
    }
}

bool GroupCommit::commit_together(Driver& driver, const std::vector<Place>& group, bool& in_doubt) noexcept {
    try {
        std::vector<const Entry*> entries;
        for (const Place& place : group) entries.push_back(place.waiting->entry);
        driver.commit(entries);
        return true;
    } catch (const CommitError&) {
        in_doubt = true;
    } catch (const std::exception&) {
    }
    return false;
}

void GroupCommit::commit_alone(Driver& driver, Waiting& waiting, bool& in_doubt) noexcept {
    try {
        driver.commit({&waiting.entry, 1});
        in_doubt = false;
        return;
    } catch (const CommitError&) {
        in_doubt = true;
        waiting.failure = std::current_exception();
    } catch (const std::exception&) {
        waiting.failure = std::current_exception();
    }
    try {
        if (took_place(driver, waiting.entry->id, in_doubt)) waiting.failure = nullptr;
    } catch (const std::exception& error) {
        report_failure("CloseMQEntry", error.what());
        waiting.failure = std::make_exception_ptr(CommitInDoubt());
    }
}

}  // namespace vel
