// The calls by which a message comes into the queue.
#include <memory>

#include "platform/queue/open_entries.h"
#include "platform/queue/reclaim.h"
#include "platform/queue/report.h"
#include "platform/queue/store.h"
#include "vel/platform/queue.h"

namespace {

constexpr unsigned char kDone = 1;
constexpr unsigned char kFailed = 0;

unsigned char close_entry(MQContext* context) {
    vel::take_open_entry(context)->close();
    return kDone;
}

unsigned char discard_entry(MQContext* context) { return vel::take_open_entry(context)->discard() ? kDone : kFailed; }

}  // namespace

extern "C" {

unsigned char MQInit(const char*, const char* module) {
    vel::set_module(module);
    return vel::guarded("MQInit", kFailed, [] {
        vel::connect();
        vel::reclaim(*vel::connected());
        return kDone;
    });
}

MQContext* CreateMQEntry(void) {
    return vel::guarded("CreateMQEntry", static_cast<MQContext*>(nullptr),
                        [] { return vel::remember(std::make_unique<vel::OpenEntry>(vel::connected())); });
}

const char* GetMQPathName(MQContext* context, const char* extension) {
    return vel::guarded("GetMQPathName", static_cast<const char*>(nullptr),
                        [=] { return vel::open_entry(context).path(extension ? extension : ""); });
}

unsigned char InsertMQChannel(MQContext* context, const char* channel, int priority) {
    return vel::guarded("InsertMQChannel", kFailed, [=] {
        if (!channel || !*channel) throw vel::QueueError("the channel has no name");
        vel::open_entry(context).set_channel(channel, priority);
        return kDone;
    });
}

unsigned char PutMQEnvelope(MQContext* context, stEnvelope* envelope) {
    return vel::guarded("PutMQEnvelope", kFailed, [=] {
        if (!envelope) throw vel::QueueError("there is no envelope");
        vel::open_entry(context).set_envelope(vel::copy_of(*envelope));
        return kDone;
    });
}

unsigned char CloseMQEntry(MQContext* context) {
    return vel::guarded("CloseMQEntry", kFailed, [=] { return close_entry(context); });
}

unsigned char DiscardMQEntry(MQContext* context) {
    return vel::guarded("DiscardMQEntry", kFailed, [=] { return discard_entry(context); });
}

}  // extern "C"
