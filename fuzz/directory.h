// The directory in which a fuzz target's temporary files are made, which goes at the end.
#ifndef VEL_FUZZ_DIRECTORY_H
#define VEL_FUZZ_DIRECTORY_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "vel/frame.h"
#include "vel/platform/config.h"
#include "vel/platform/log.h"

inline char fuzz_directory[] = "/tmp/vel-fuzz-XXXXXX";

// Starts the library with its log lines dropped. Returns the descriptor of an input file in memory.
inline int start_in_directory() {
    if (!::mkdtemp(fuzz_directory)) std::exit(1);
    std::atexit([] { std::filesystem::remove_all(fuzz_directory); });
    ProfileOverlaySet("Gateway", "TemporaryDirectory", fuzz_directory);
    LogCaptureStart([](void*, int, const char*, const char*) {}, nullptr);
    InitVELDll_NOMQ("fuzz");
    return ::memfd_create("input", 0);
}

#endif
