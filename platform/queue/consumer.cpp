#include "platform/queue/consumer.h"

#include <unistd.h>

#include <utility>

#include "platform/queue/accounting.h"
#include "platform/queue/check.h"
#include "platform/queue/identifier.h"
#include "platform/queue/reclaim.h"
#include "platform/queue/report.h"

namespace vel {
namespace {

constexpr int64_t kMicroseconds = 1'000'000;

}  // namespace

Consumer::Consumer(std::shared_ptr<Store> store, std::string who)
    : store_(std::move(store)),
      who_(std::move(who)),
      process_(::getpid()),
      alive_(make_owned([&](const std::string& id) { return store_->directory().consumer(id); })) {}

void Consumer::require_process() const {
    if (process_ != ::getpid()) throw QueueError("the consumer is another process");
}

Selection Consumer::claimed(const std::string& id, int32_t recipient) const {
    return {id, recipient, MQ_CLAIMED, alive_.id};
}

std::optional<Entry> Consumer::claim(const std::optional<std::vector<std::string>>& channels, std::size_t limit,
                                     int64_t lease) {
    require_file();
    ClaimRequest request{alive_.id, channels, limit, 0, 0, lease * kMicroseconds};
    if (is_time_to_look_around()) take_back_claims(*store_);
    auto entry = claim_whole(request);
    if (!entry) {
        take_back_claims(*store_);
        entry = claim_whole(std::move(request));
    }
    if (entry) account_all("claimed", *entry, who_);
    return entry;
}

// A busy consumer must not keep the claims of the dead from coming back.
bool Consumer::is_time_to_look_around() {
    const int64_t time = now();
    const int64_t since = time - looked_around_.exchange(time);
    return since < 0 || since > kMicroseconds;
}

std::optional<Entry> Consumer::claim_whole(ClaimRequest request) {
    const int64_t lease = request.lease_until;
    for (;;) {
        request.now = now();
        request.uptime = uptime();
        request.lease_until = request.uptime + lease;
        auto entry = store_->ask([&](Driver& driver) { return driver.claim(request); });
        if (!entry || is_whole(*entry)) return entry;
        hold(*entry);
    }
}

bool Consumer::is_whole(const Entry& entry) {
    try {
        return is_sound(store_->directory(), entry);
    } catch (const std::exception&) {
        give_back(entry.id);
        throw;
    }
}

void Consumer::give_back(const std::string& id) noexcept {
    try {
        store_->ask([&](Driver& driver) { return driver.change(claimed(id, MQ_ALL), Change{MQ_WAITING}); });
    } catch (const std::exception& error) {
        report_failure("MQClaim", error.what());
    }
}

// Others take a consumer without its file for dead.
void Consumer::require_file() const {
    if (!leads_to(alive_.path, alive_.lock.get())) throw QueueError("the consumer's file is gone: " + alive_.path);
}

void Consumer::hold(const Entry& entry) {
    const Change change{MQ_HELD, std::nullopt, kDamaged};
    const Settled held = store_->ask([&](Driver& driver) { return driver.change(claimed(entry.id, MQ_ALL), change); });
    report_failure("MQClaim", (std::string(kDamaged) + ": " + store_->directory().message(entry.id)).c_str());
    account_all("held", held.entry, who_, kDamaged);
}

void Consumer::leave() {
    store_->ask([&](Driver& driver) { driver.take_back(alive_.id, now()); });
    ::unlink(alive_.path.c_str());
}

}  // namespace vel
