// Mailing a log file that has been rotated.
#include <string>

#include "build/texts.h"
#include "frame/access.h"
#include "frame/at_boundary.h"
#include "frame/open_handle.h"
#include "frame/settings.h"
#include "notify/addresses.h"
#include "notify/original.h"
#include "notify/parts.h"
#include "notify/submission.h"
#include "vel/notify.h"

namespace vel {
namespace {

constexpr Setting<4095> kLog{"Log", "Target", "stderr"};

// The log's file, as the last rotation has renamed it; empty when the log is no file.
std::string last_log() {
    const SettingText<4095> log = read(kLog);
    const bool is_file = *log.data() && !is(log, "stderr") && !is(log, "syslog");
    return is_file ? std::string(log.data()).append(".1") : std::string();
}

bool can_be_opened(const char* path) { return bool{OpenHandle(fileopen(path, kForReading, kUnbuffered))}; }

int send_log(const char* path, intptr_t submission) {
    if (!can_be_opened(path)) return failed("SendOldLogfile failed: fileopen failed.");
    const char* name = last_part(path);
    const std::string from = postmaster(), subject = std::string("old log file ").append(name);
    const OneText to(from), file(path), line(std::string("The old log file ").append(name).append(" is attached."));
    const int result = GenerateMimeMessage(from.c_str(), kNoticeChannel, to.chain(), subject.c_str(), submission,
                                           line.chain(), file.chain(), 0);
    return result == 0 ? 0 : failed("SendOldLogfile failed: GenerateMimeMessage failed.");
}

}  // namespace
}  // namespace vel

extern "C" int SendOldLogfile(const char* path, intptr_t submission) {
    return vel::at_boundary(
        -1, [] { vel::failed("SendOldLogfile failed: out of memory."); },
        [&] { return vel::send_log(path ? path : vel::last_log().c_str(), submission); });
}
