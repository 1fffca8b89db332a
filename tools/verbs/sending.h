// What vel send and vel build --send do in the end: a message goes into the queue.
#ifndef VEL_TOOLS_VERBS_SENDING_H
#define VEL_TOOLS_VERBS_SENDING_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/io/session.h"

namespace vel::command {

constexpr const char* kDefaultChannel = "smtp";

struct Envelope {
    std::string sender;  // empty: nobody, for reports of delivery
    std::string id;
    int32_t return_type = 0;
    int32_t notify = 0;
    std::string channel = kDefaultChannel;
    std::vector<std::string> recipients;
    std::vector<std::string> originals;  // of each recipient, empty where there is none; or none at all
};

// Puts a message file, as outgoing_copy makes it, into the queue and then prints the identifier, or with json an
// object. Throws Failure: unavailable without a queue, temporary when it does not take the message; nothing is in
// the queue then.
void send_message(const std::string& path, const Envelope& envelope, bool json, Session& session);

}  // namespace vel::command

#endif
