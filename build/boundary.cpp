#include "build/boundary.h"

#include <pthread.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <ctime>

namespace vel {
namespace {

// The identifier of the calling thread: an address where pointers have 64 bits, of which the middle ones differ.
uint32_t thread_number() {
    const auto id = static_cast<uint64_t>(::pthread_self());
    return static_cast<uint32_t>(sizeof(pthread_t) > sizeof(uint32_t) ? id >> 12 : id);
}

}  // namespace

std::string make_boundary() {
    char text[sizeof "VEL.Boundary." + 16];
    const auto seconds = static_cast<uint32_t>(std::time(nullptr));
    std::snprintf(text, sizeof text, "VEL.Boundary.%08" PRIX32 "%08" PRIX32, seconds, thread_number());
    return text;
}

}  // namespace vel
