#include "bench/session.h"

#include <stdlib.h>

#include "vel/frame.h"
#include "vel/platform/log.h"

namespace vel::bench {
namespace {

void drop(void*, int, const char*, const char*) {}

}  // namespace

Session::Session(const char* settings) {
    ::setenv("OSTRA_CONFIG_DIR", settings, 1);
    LogCaptureStart(drop, nullptr);
    InitVELDll_NOMQ("bench");
}

Session::~Session() {
    TerminateVELDll();
    LogCaptureStop();
}

}  // namespace vel::bench
