// What the queue keeps of an entry.
#ifndef VEL_PLATFORM_QUEUE_ENTRY_H
#define VEL_PLATFORM_QUEUE_ENTRY_H

#include <cstdint>
#include <string>
#include <vector>

#include "vel/platform/queue.h"

namespace vel {

struct Sender {
    std::string address;
    std::string envelope_id;
    int32_t return_type = 0;
    int32_t number = 0;
    std::string text;
    std::string channel;
};

struct Recipient {
    int32_t number = 0;
    std::string channel;
    std::string address;
    std::string original;
    int32_t notify = 0;
    std::string text;
    std::string text2;
    int32_t state = MQ_WAITING;
    int64_t due = 0;
    bool deferred = false;  // until due; otherwise that is its turn, and any time will do
    int32_t attempts = 0;
    std::string reason;
};

struct Envelope {
    int32_t number = 0;
    int32_t number2 = 0;
    Sender sender;
    std::vector<Recipient> recipients;
};

struct Entry {
    std::string id;
    std::string channel;
    int32_t priority = 0;
    int64_t arrival = 0;
    int64_t size = 0;
    Envelope envelope;
};

// Copies an envelope that a submitter hands over; throws when it has not exactly one sender.
Envelope copy_of(stEnvelope& envelope);

}  // namespace vel

#endif
