// Opening the shared table, with the seeds in its place where there is none.
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <string>
#include <utility>

#include "frame/at_boundary.h"
#include "frame/log.h"
#include "magic/shared_table.h"

namespace vel {
namespace {

std::unique_ptr<diamondBase> magicDiamondBase;
std::unique_ptr<magicdb> magicDb;
pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;

constexpr Setting<4095> kInstallDirectory{"Config", "InstallDirectory", ""};
constexpr std::array kFiles{"/magicdb.db", "/magicdb.id0"};
constexpr const char* kLogName = "Libmagic";

bool needs_seeds(const magicdb& table) { return table.status() == DIA_MISSING || table.status() == DIA_LAYOUT; }

// Two processes may start at once: only under the lock it is certain that nobody has put another table there. Without
// seeds everything stays where it is; otherwise closing the table makes room for them.
void put_seeds(magicdb& table, const std::string& install, const std::string& queue) {
    const RelationHeld held(table);
    if (held.status() != DIA_OK || !needs_seeds(table)) return;
    const auto seed = [&](const char* file) { return install + "/srcdb" + file; };
    for (const char* file : kFiles) {
        if (::access(seed(file).c_str(), R_OK) != 0) return;
    }
    if (table.close() != DIA_OK) return;
    for (const char* file : kFiles) CopyFile(seed(file).c_str(), (queue + file).c_str(), 0);
    table.open();
}

void open_table() {
    const auto queue = read(kQueueDirectory, kIniFile);
    const auto install = read(kInstallDirectory, kIniFile);
    magicDb.reset();
    magicDiamondBase = std::make_unique<diamondBase>(queue.data());
    auto table = std::make_unique<magicdb>(*magicDiamondBase);
    if (needs_seeds(*table)) put_seeds(*table, install.data(), queue.data());
    if (table->status() == DIA_OK) magicDb = std::move(table);
}

}  // namespace

SharedTableHeld::SharedTableHeld() { pthread_mutex_lock(&mutex); }
SharedTableHeld::~SharedTableHeld() { pthread_mutex_unlock(&mutex); }
magicdb* SharedTableHeld::table() const { return magicDb.get(); }

}  // namespace vel

extern "C" {

int libmagic_init(void) {
    vel::at_boundary(0, [] {
        vel::open_table();
        return 0;
    });
    if (vel::magicDb) {
        vel::log_line_as(vel::kLogName, vel::kLogNotice, "magic db opened");
    } else {
        vel::log_line_as(vel::kLogName, vel::kLogError, "magic db not opened");
    }
    return pthread_mutex_init(&vel::mutex, nullptr);
}

void libmagic_fini(void) { vel::magicDb.reset(); }

}  // extern "C"
