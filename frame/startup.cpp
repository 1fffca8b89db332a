// Start-up and shut-down: the one place that knows what the library is made of.
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "frame/log.h"
#include "frame/settings.h"
#include "vel/platform/queue.h"
#include "vel/rfc822.h"

extern "C" {
char iniFileName[16];
char appName[32];
char VELQueueDir[4095];
char VELTempDir[4095];
char VELInstallDir[4095];
char VELLogFileName[32];
int32_t bCalledInitVELDll = 0;
int32_t bCalledInitVELDll_NOMQ = 0;
}

namespace vel {
namespace {

constexpr Setting<16> kTimeZone{"Gateway", "TimeZone", "PST8PDT"};
constexpr Setting<4095> kQueueDirectory{"Gateway", "QueueDirectory", ""};
constexpr Setting<4095> kTemporaryDirectory{"Gateway", "TemporaryDirectory", ""};
constexpr Setting<4095> kInstallDirectory{"Config", "InstallDirectory", ""};
constexpr Setting<128> kDirectoryHost{"Ldap", "HostName", "localhost"};
constexpr const char* kLeaveZoneAlone = "xxx";

// Reads a setting into the global that keeps it; an unknown INI_MODE leaves the global as it is.
template <std::size_t Size>
void keep(char (&global)[Size], const Setting<Size>& setting) {
    VELGetPrivateProfileString(setting.section, setting.key, setting.fallback, global, int{Size}, iniFileName);
}

void set_time_zone() {
    const SettingText<16> zone = read(kTimeZone);
    if (!ascii::starts_with_ignoring_case(zone.data(), kLeaveZoneAlone)) ::setenv("TZ", zone.data(), 1);
    ::tzset();
}

enum class Variant { with_queue, without_queue };

// What both variants do, in this order.
void start(const char* name, Variant variant) {
    std::snprintf(iniFileName, sizeof iniFileName, "%s", "ostra.ini");
    std::snprintf(appName, sizeof appName, "%.31s", name ? name : "");
    set_time_zone();
    InitLineIO();
    Init822Parser();
    keep(VELQueueDir, kQueueDirectory);
    keep(VELTempDir, kTemporaryDirectory);
    if (variant == Variant::without_queue) std::snprintf(VELLogFileName, sizeof VELLogFileName, "%s", "ostra.log");
    keep(VELInstallDir, kInstallDirectory);
    ::setenv("TMP", VELTempDir, 1);
}

}  // namespace
}  // namespace vel

extern "C" {

int InitVELDll(const char* name) {
    if (bCalledInitVELDll) return 1;
    vel::start(name, vel::Variant::with_queue);
    if (!MQInit(vel::read_directly(vel::kDirectoryHost).data(), appName)) {
        vel::log_text(vel::kLogError, "MQInit failed.");
        return 0;
    }
    return bCalledInitVELDll = 1;
}

// Kept: the flag is never set, so that every call repeats the whole sequence.
int InitVELDll_NOMQ(const char* name) {
    if (!bCalledInitVELDll_NOMQ) vel::start(name, vel::Variant::without_queue);
    return 1;
}

void TerminateVELDll(void) {
    TerminateLineIO();
    Terminate822Parser();
    bCalledInitVELDll = 0;
    bCalledInitVELDll_NOMQ = 0;
}

const char* GetQueueDir(void) { return VELQueueDir; }
const char* GetTempDir(void) { return VELTempDir; }
const char* GetInstallDir(void) { return VELInstallDir; }

}  // extern "C"
