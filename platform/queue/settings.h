// What the queue reads from "ostra.ini", afresh each time.
#ifndef VEL_PLATFORM_QUEUE_SETTINGS_H
#define VEL_PLATFORM_QUEUE_SETTINGS_H

#include <cstdint>
#include <string>

namespace vel {

// [Gateway] QueueDirectory; default empty.
std::string queue_directory();

// [Queue] MinimumFree, given in MiB, in bytes; default 16 MiB.
uint64_t minimum_free();

}  // namespace vel

#endif
