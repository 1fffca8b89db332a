// The calls by which an operator sees what is in the queue and interferes.
#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/queue/check.h"
#include "platform/queue/entry_view.h"
#include "platform/queue/reclaim.h"
#include "platform/queue/report.h"
#include "platform/queue/settle.h"
#include "vel/platform/queue.h"

namespace {

constexpr int kFailed = -1;
constexpr int kAllStates = MQ_WAITING | MQ_CLAIMED | MQ_HELD;

// How many entries are read before they are shown, so that the visitor may use the queue itself.
constexpr std::size_t kPage = 100;

int settle(const char* call, const char* id, int recipient, int states, const vel::Outcome& outcome, const char* who) {
    return vel::guarded(call, kFailed, [&] {
        const vel::Selection selection{vel::short_identifier(id), recipient, states};
        return vel::settle(*vel::connected(), selection, outcome, who ? who : "");
    });
}

int read_entry(const char* id, MQEntry*& result) {
    const auto store = vel::connected();
    auto entry = store->ask([&](vel::Driver& driver) { return driver.read(vel::short_identifier(id)); });
    if (!entry) return 0;
    result = vel::view_of(*store, std::move(*entry)).release();
    return 1;
}

int list_entries(vel::ListFilter filter, MQEntryVisitor visitor, void* context) {
    const auto store = vel::connected();
    for (int shown = 0;;) {
        auto page = store->ask([&](vel::Driver& driver) { return driver.list(filter, kPage); });
        if (page.empty()) return shown;
        filter.after = page.back().id;
        for (vel::Entry& entry : page) {
            ++shown;
            if (!visitor(context, vel::view_of(*store, std::move(entry)).get())) return shown;
        }
    }
}

int count_entries(MQCountVisitor visitor, void* context) {
    const auto counts = vel::connected()->ask([](vel::Driver& driver) { return driver.count(); });
    for (const vel::Count& count : counts) {
        const MQCount view{count.channel.c_str(), count.state, count.recipients, count.oldest};
        visitor(context, &view);
    }
    return static_cast<int>(counts.size());
}

int check_queue(bool repair, MQFindingVisitor visitor, void* context) {
    int findings = 0;
    vel::check(*vel::connected(), repair, [&](const std::string& id, const std::string& what) {
        ++findings;
        visitor(context, id.c_str(), what.c_str());
    });
    return findings;
}

}  // namespace

extern "C" {

void MQFreeEntry(MQEntry* entry) { std::unique_ptr<vel::EntryView>(static_cast<vel::EntryView*>(entry)).reset(); }

int MQHoldEntry(const char* id, int recipient, const char* reason, const char* who) {
    return settle("MQHoldEntry", id, recipient, MQ_WAITING, vel::Outcome::held(reason), who);
}

int MQReleaseEntry(const char* id, int recipient, const char* who) {
    return settle("MQReleaseEntry", id, recipient, MQ_HELD, vel::Outcome::released(), who);
}

int MQRemoveEntry(const char* id, int recipient, const char* who) {
    return settle("MQRemoveEntry", id, recipient, MQ_WAITING | MQ_HELD, vel::Outcome::removed(), who);
}

int MQReadEntry(const char* id, MQEntry** entry) {
    *entry = nullptr;
    return vel::guarded("MQReadEntry", kFailed, [=] { return read_entry(id, *entry); });
}

int MQListEntries(const char* channel, int states, const char* after, MQEntryVisitor visitor, void* context) {
    return vel::guarded("MQListEntries", kFailed, [=] {
        vel::ListFilter filter{std::nullopt, states ? states : kAllStates, vel::short_identifier(after)};
        if (channel) filter.channel = channel;
        return list_entries(std::move(filter), visitor, context);
    });
}

int MQCountEntries(MQCountVisitor visitor, void* context) {
    return vel::guarded("MQCountEntries", kFailed, [=] { return count_entries(visitor, context); });
}

int64_t MQFreeBytes(void) {
    return vel::guarded("MQFreeBytes", int64_t{kFailed},
                        [] { return static_cast<int64_t>(vel::connected()->directory().free_bytes()); });
}

int MQCheck(int repair, MQFindingVisitor visitor, void* context) {
    return vel::guarded("MQCheck", kFailed, [=] { return check_queue(repair != 0, visitor, context); });
}

int MQIsLocal(const char* path) {
    return vel::guarded("MQIsLocal", 0, [=] { return vel::is_local(path ? path : "") ? 1 : 0; });
}

int MQReclaim(void) {
    return vel::guarded("MQReclaim", kFailed, [] { return static_cast<int>(vel::reclaim(*vel::connected())); });
}

}  // extern "C"
