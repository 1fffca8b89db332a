// Dates in both layouts and zones, from a heap block of exactly the text's size. What parses can be
// written, and what is written parses.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "frame/owned.h"
#include "vel/platform/log.h"
#include "vel/rfc822.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    LogCaptureStart([](void*, int, const char*, const char*) {}, nullptr);
    const auto text = vel::copy_text({reinterpret_cast<const char*>(data), size});
    GetZoneInt(text.get());
    isNextMsgHeader(text.get());
    for (const auto parse : {rfc2UTC, ctime2UTC}) {
        UTCtime* time = nullptr;
        if (!parse(text.get(), &time)) continue;
        const vel::COwned<UTCtime> parsed(time);
        const vel::COwned<char> output(static_cast<char*>(std::malloc(64)));
        if (!UTC2rfc(parsed.get(), output.get()) || !rfc2UTC(output.get(), &time)) std::abort();
        std::free(time);
    }
    return 0;
}
