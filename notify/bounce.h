// One notice that returns a message: what differs between those to the sender and those to the postmaster.
#ifndef VEL_NOTIFY_BOUNCE_H
#define VEL_NOTIFY_BOUNCE_H

#include <string>

#include "notify/parts.h"

namespace vel {

// What the log says of a bounce that fails.
struct BounceComplaints {
    const char* no_memory;
    const char* no_sender;  // no memory for the address that it is from
    Complaints part;
    Complaints header_block;
    const char* not_joined;
    const char* not_submitted;
};

struct Bounce {
    std::string to;
    const char* heading;
    const char* closing;
    bool has_header_only;
    const BounceComplaints& complaints;
};

// The message that is returned, and the caller's number for the submission.
struct Returned {
    const char* path;
    const ms* reasons;
    intptr_t submission;
};

// Builds a bounce and submits it. Returns 0, or -1 behind a line in the log. Throws std::bad_alloc.
int send(const Bounce& bounce, const Returned& returned);

}  // namespace vel

#endif
