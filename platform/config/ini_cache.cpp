#include "platform/config/ini_cache.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/config/held_file.h"
#include "platform/whole_file.h"

namespace vel {
namespace {

// Programs read one file; a few more for those that read a second one, and for tests.
constexpr std::size_t kFilesKept = 8;

// The coarsest clock of a file system counts in steps of 2 seconds (FAT): a file can change again
// within a step and bear the same times. The third second covers the lag of the kernel's own clock.
constexpr int64_t kCoarsestStep = 3'000'000'000;

struct Snapshot {
    std::optional<FileStamp> stamp;
    std::shared_ptr<HeldFile> settled;  // whoever changes the file from now on changes its stamp; else null
    std::shared_ptr<const IniFile> ini;
};

// The lock is held to copy a pointer, never while a file is read.
class Shelf {
  public:
    Snapshot find(std::string_view path) {
        const std::lock_guard lock(mutex_);
        const auto slot = slot_of(path);
        return slot == slots_.end() ? Snapshot() : slot->snapshot;
    }

    void keep(std::string_view path, const Snapshot& snapshot) {
        Slot replaced{std::string(path), snapshot};  // freed when the lock is given up
        const std::lock_guard lock(mutex_);
        auto slot = slot_of(path);
        if (slot == slots_.end()) slot = slots_.begin() + static_cast<std::ptrdiff_t>(next_++ % kFilesKept);
        std::swap(*slot, replaced);
    }

  private:
    struct Slot {
        std::string path;
        Snapshot snapshot;
    };
    using Slots = std::array<Slot, kFilesKept>;

    Slots::iterator slot_of(std::string_view path) {
        return std::find_if(slots_.begin(), slots_.end(), [=](const Slot& slot) { return slot.path == path; });
    }

    std::mutex mutex_;
    Slots slots_;
    std::size_t next_ = 0;
};

// Never destroyed, so that settings can be read until the process is gone.
Shelf& shelf() {
    static Shelf& only = *new Shelf;
    return only;
}

int64_t now() { return std::chrono::nanoseconds(std::chrono::system_clock::now().time_since_epoch()).count(); }

// Reads the file, but parses it only when it says something new. The stamp and the time are taken
// before the content: a change that comes in between shows, or finds the snapshot unsettled.
Snapshot read_anew(const char* path, const Snapshot& known) {
    const int64_t started = now();
    const Descriptor file = open_regular(path);
    if (!file) return {};
    Snapshot fresh;
    fresh.stamp = stamp_of(file.get());
    auto text = read_whole(file.get(), kIniMax);
    if (!fresh.stamp || !text) return {};
    if (std::max(fresh.stamp->modified, fresh.stamp->changed) + kCoarsestStep < started) {
        fresh.settled = std::make_shared<HeldFile>(file.get(), *fresh.stamp);
    }
    const bool same = known.ini && known.ini->text() == *text;
    fresh.ini = same ? known.ini : std::make_shared<const IniFile>(*std::move(text));
    return fresh;
}

}  // namespace

std::shared_ptr<const IniFile> current_ini(const char* path) {
    Snapshot known = shelf().find(path);
    if (known.settled && known.settled->stands_at(path)) return std::move(known.ini);
    const auto stamp = stamp_of(path);
    if (!stamp) return nullptr;
    if (known.settled && known.stamp == stamp) return std::move(known.ini);
    Snapshot fresh = read_anew(path, known);
    if (fresh.ini) shelf().keep(path, fresh);
    return std::move(fresh.ini);
}

}  // namespace vel
