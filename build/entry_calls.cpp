// Entries and identifiers for callers that write the message themselves.
#include <cstdlib>
#include <cstring>

#include "build/queue_entry.h"
#include "build/texts.h"
#include "vel/build.h"
#include "vel/frame.h"

extern "C" {

MQContext* VELGetNewMQEntry(void) { return vel::new_entry(); }

char* VELGetNewMQId(MQContext* context) {
    const char* path = GetMQPathName(context, "");
    return path ? ::strdup(path) : nullptr;
}

void ReleaseQueueId(char* identifier) {
    if (!vel::is_empty(identifier)) unlockmsg(identifier);
    std::free(identifier);
}

void VELFreeMQId(char* identifier) { std::free(identifier); }

}  // extern "C"
