#include "platform/queue/settle.h"

#include "platform/queue/accounting.h"
#include "platform/queue/identifier.h"
#include "platform/queue/report.h"

namespace vel {
namespace {

std::string text_of(const char* text) { return text ? text : ""; }

}  // namespace

Outcome Outcome::failed(const char* reason) { return {"failed", std::nullopt, text_of(reason)}; }

Outcome Outcome::deferred(int64_t due, const char* reason) {
    return {"deferred", Change{MQ_WAITING, due, text_of(reason)}, text_of(reason)};
}

Outcome Outcome::held(const char* reason) {
    return {"held", Change{MQ_HELD, std::nullopt, text_of(reason)}, text_of(reason)};
}

Outcome Outcome::released() { return {"released", Change{MQ_WAITING, now(), std::nullopt}}; }

int settle(Store& store, const Selection& selection, const Outcome& outcome, const std::string& who) {
    if (!is_identifier(selection.id)) return 0;
    const std::string base = store.directory().base(selection.id);
    const Settled settled = store.ask([&](Driver& driver) {
        return outcome.change ? driver.change(selection, *outcome.change) : driver.remove(selection);
    });
    if (settled.ended) remove_files(base);
    account_all(outcome.event, settled.entry, who, outcome.reason);
    return static_cast<int>(settled.entry.envelope.recipients.size());
}

int extend(Store& store, const Selection& selection, int lease_seconds) {
    if (lease_seconds <= 0) throw QueueError("a lease lasts");
    const int64_t until = uptime() + int64_t{lease_seconds} * 1'000'000;
    return static_cast<int>(store.ask([&](Driver& driver) { return driver.extend(selection, until); }));
}

std::string short_identifier(const char* id) {
    const std::string_view text = id ? id : "";
    const auto slash = text.rfind('/');
    return std::string(slash == text.npos ? text : text.substr(slash + 1));
}

}  // namespace vel
