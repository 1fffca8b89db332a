// The queue's calls before there is a queue: each of them fails and says so, so that programs link.
#include <array>
#include <cstdio>

#include "vel/platform/log.h"
#include "vel/platform/queue.h"

namespace {

constexpr int kLogError = 1;
constexpr unsigned char kFailed = 0;

unsigned char refuse(const char* call) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), "%s: this queue library takes no messages yet.", call);
    LogMessage(kLogError, "velmq", text.data());
    return kFailed;
}

}  // namespace

extern "C" {

unsigned char MQInit(const char*, const char*) { return refuse("MQInit"); }

MQContext* CreateMQEntry(void) {
    refuse("CreateMQEntry");
    return nullptr;
}

const char* GetMQPathName(MQContext*, const char*) {
    refuse("GetMQPathName");
    return nullptr;
}

unsigned char InsertMQChannel(MQContext*, const char*, int) { return refuse("InsertMQChannel"); }
unsigned char PutMQEnvelope(MQContext*, stEnvelope*) { return refuse("PutMQEnvelope"); }
unsigned char CloseMQEntry(MQContext*) { return refuse("CloseMQEntry"); }
unsigned char DiscardMQEntry(MQContext*) { return refuse("DiscardMQEntry"); }

}  // extern "C"
