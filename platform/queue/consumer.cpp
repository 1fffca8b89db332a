#include "platform/queue/consumer.h"

#include <unistd.h>

#include <utility>

#include "platform/queue/accounting.h"
#include "platform/queue/check.h"
#include "platform/queue/identifier.h"
#include "platform/queue/owned_file.h"
#include "platform/queue/reclaim.h"
#include "platform/queue/report.h"

namespace vel {
namespace {

constexpr int64_t kMicroseconds = 1'000'000;

}  // namespace

Consumer::Consumer(std::shared_ptr<Store> store, std::string who)
    : store_(std::move(store)), who_(std::move(who)), process_(::getpid()) {
    while (!alive_) {
        id_ = new_identifier();
        alive_ = make_owned(store_->directory().consumer(id_));
    }
}

void Consumer::require_process() const {
    if (process_ != ::getpid()) throw QueueError("the consumer is another process");
}

Selection Consumer::claimed(const std::string& id, int32_t recipient) const { return {id, recipient, MQ_CLAIMED, id_}; }

std::optional<Entry> Consumer::claim(const std::optional<std::vector<std::string>>& channels, std::size_t limit,
                                     int64_t lease) {
    ClaimRequest request{id_, channels, limit, 0, lease * kMicroseconds};
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
        request.lease_until = request.now + lease;
        auto entry = store_->ask([&](Driver& driver) { return driver.claim(request); });
        if (!entry || is_sound(store_->directory(), *entry)) return entry;
        hold(*entry);
    }
}

void Consumer::hold(const Entry& entry) {
    const Change change{MQ_HELD, std::nullopt, kDamaged};
    const Settled held = store_->ask([&](Driver& driver) { return driver.change(claimed(entry.id, MQ_ALL), change); });
    report_failure("MQClaim", (std::string(kDamaged) + ": " + store_->directory().message(entry.id)).c_str());
    account_all("held", held.entry, who_, kDamaged);
}

void Consumer::leave() {
    store_->ask([&](Driver& driver) { driver.take_back(id_, now()); });
    ::unlink(store_->directory().consumer(id_).c_str());
}

}  // namespace vel
