#include "rfc822/parser_locks.h"

#include "vel/rfc822.h"

CRITICAL_SECTION csRecipParse;
CRITICAL_SECTION csParseHdr;

namespace {

// A lock that threads may hold must not be initialised again, nor a dead one deleted.
bool live = false;

}  // namespace

extern "C" {

void Init822Parser(void) {
    if (live) return;
    InitializeCriticalSection(&csRecipParse);
    InitializeCriticalSection(&csParseHdr);
    live = true;
}

void Terminate822Parser(void) {
    if (!live) return;
    DeleteCriticalSection(&csRecipParse);
    DeleteCriticalSection(&csParseHdr);
    live = false;
}

}  // extern "C"
