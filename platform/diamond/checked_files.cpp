#include "platform/diamond/checked_files.h"

#include <map>
#include <mutex>

namespace vel {
namespace {

// A process has to do with few tables; more are checked anew.
constexpr std::size_t kMost = 64;

struct Checked {
    std::mutex mutex;
    std::map<std::string, FileStamp> stamps;
};

Checked& checked() {
    static Checked all;
    return all;
}

}  // namespace

bool was_whole(const std::string& path, const FileStamp& stamp) {
    const std::lock_guard lock(checked().mutex);
    const auto found = checked().stamps.find(path);
    return found != checked().stamps.end() && found->second == stamp;
}

void remember_whole(const std::string& path, const FileStamp& stamp) {
    const std::lock_guard lock(checked().mutex);
    if (checked().stamps.size() >= kMost) checked().stamps.clear();
    checked().stamps.insert_or_assign(path, stamp);
}

}  // namespace vel
