// What the sender of a message hears of its delivery.
#ifndef VEL_TOOLS_QUEUE_NOTICE_H
#define VEL_TOOLS_QUEUE_NOTICE_H

#include <cstdint>
#include <string>

#include "tools/report/fate.h"
#include "vel/platform/queue.h"

namespace vel::command {

// What has become of recipients.
struct News {
    Fate fate;                // delivered, relayed, delayed or permanent_failure
    std::string status;       // RFC 3463
    std::string reason;       // why they are not delivered, else empty
    int64_t retry_until = 0;  // seconds since 1970, when they are delayed
};

// Whether there is somebody to tell. Not of a message from nobody, nor of a notice: there is none of a notice, whoever
// it is from.
bool has_reader(const MQEntry& entry);

// Tells the sender of an entry that has a reader, in one notice, about those of its recipients of whom he wants to hear
// this: without NOTIFY he wants to hear of failures (RFC 3461 section 4.1). It is a report when the envelope has any of
// NOTIFY, ORCPT, ENVID and RET, else a bounce. The notice, if there is one, is in the queue when the call returns.
// Throws Failure.
void tell_sender(const MQEntry& entry, const News& news);

}  // namespace vel::command

#endif
