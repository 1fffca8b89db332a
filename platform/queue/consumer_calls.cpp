// The calls by which messages leave the queue.
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/queue/consumer.h"
#include "platform/queue/entry_view.h"
#include "platform/queue/identifier.h"
#include "platform/queue/reclaim.h"
#include "platform/queue/report.h"
#include "platform/queue/settle.h"
#include "vel/platform/queue.h"

struct MQConsumer : vel::Consumer {
    using Consumer::Consumer;
};

namespace {

constexpr int kFailed = -1;

std::optional<std::vector<std::string>> list_of(const char* const* names) {
    if (!names) return std::nullopt;
    std::vector<std::string> list;
    for (; *names; ++names) list.emplace_back(*names);
    return list;
}

MQConsumer& alive(MQConsumer* consumer) {
    if (!consumer) throw vel::QueueError("there is no consumer");
    consumer->require_process();
    return *consumer;
}

int claim(MQConsumer& consumer, const char* const* channels, int limit, int lease, MQEntry*& result) {
    if (lease <= 0 || limit < 0) throw vel::QueueError("a lease lasts, and a limit is no less than 0");
    std::string id;
    id.reserve(vel::kIdentifierSize);  // Nothing but the view may fail behind the claim.
    auto entry = consumer.claim(list_of(channels), static_cast<std::size_t>(limit), lease);
    if (!entry) return 0;
    id = entry->id;
    try {
        result = vel::view_of(consumer.store(), std::move(*entry)).release();
    } catch (const std::exception&) {
        consumer.give_back(id);
        throw;
    }
    return 1;
}

// What becomes of claimed recipients.
int settle(const char* call, MQConsumer* consumer, const char* id, int recipient, const vel::Outcome& outcome) {
    return vel::guarded(call, kFailed, [&] {
        MQConsumer& by = alive(consumer);
        return vel::settle(by.store(), by.claimed(vel::short_identifier(id), recipient), outcome, by.who());
    });
}

}  // namespace

extern "C" {

MQConsumer* MQOpenConsumer(const char* who) {
    return vel::guarded("MQOpenConsumer", static_cast<MQConsumer*>(nullptr), [=] {
        auto store = vel::connected();
        vel::reclaim(*store);
        return std::make_unique<MQConsumer>(std::move(store), who ? who : "").release();
    });
}

int MQCloseConsumer(MQConsumer* consumer) {
    const std::unique_ptr<MQConsumer> closed(consumer);
    return vel::guarded("MQCloseConsumer", 0, [=] {
        alive(consumer).leave();
        return 1;
    });
}

int MQClaim(MQConsumer* consumer, const char* const* channels, int limit, int lease, MQEntry** entry) {
    *entry = nullptr;
    return vel::guarded("MQClaim", kFailed, [=] { return claim(alive(consumer), channels, limit, lease, *entry); });
}

int MQExtend(MQConsumer* consumer, const char* id, int recipient, int lease) {
    return vel::guarded("MQExtend", kFailed, [=] {
        MQConsumer& by = alive(consumer);
        return vel::extend(by.store(), by.claimed(vel::short_identifier(id), recipient), lease);
    });
}

int MQGiveBack(MQConsumer* consumer, const char* id, int recipient) {
    return settle("MQGiveBack", consumer, id, recipient, vel::Outcome::given_back());
}

int MQFinish(MQConsumer* consumer, const char* id, int recipient) {
    return settle("MQFinish", consumer, id, recipient, vel::Outcome::delivered());
}

int MQFail(MQConsumer* consumer, const char* id, int recipient, const char* reason) {
    return settle("MQFail", consumer, id, recipient, vel::Outcome::failed(reason));
}

int MQDefer(MQConsumer* consumer, const char* id, int recipient, int64_t due, const char* reason) {
    return settle("MQDefer", consumer, id, recipient, vel::Outcome::deferred(due, reason));
}

int MQHold(MQConsumer* consumer, const char* id, int recipient, const char* reason) {
    return settle("MQHold", consumer, id, recipient, vel::Outcome::held(reason));
}

}  // extern "C"
