#include "tools/verbs/working_place.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "tools/io/blocks.h"
#include "tools/io/journal.h"
#include "tools/io/place_new.h"
#include "tools/io/scratch_file.h"
#include "tools/queue/connection.h"
#include "tools/types/seeds.h"
#include "tools/types/table.h"

namespace vel::command {
namespace {

constexpr mode_t kOfAll = 0777;      // as the umask has it
constexpr mode_t kOfGateway = 0770;  // holds mail

}  // namespace

WorkingPlace::~WorkingPlace() {
    if (done_) return;
    std::for_each(made_.rbegin(), made_.rend(), [](const std::string& path) { ::rmdir(path.c_str()); });
}

void WorkingPlace::require_free() const {
    struct stat status {};
    if (::lstat(ini().c_str(), &status) == 0) throw Failure(Exit::cannot_create, ini() + ": is there already");
}

void WorkingPlace::make(const std::string& settings) {
    make_root();
    lock_root();
    require_free();
    make_directory(queue(), kOfGateway);
    make_directory(temporary(), kOfGateway);
    make_directory(install(), kOfAll);
    make_queue();
    make_types();
    write_ini(settings);
    done_ = true;
}

void WorkingPlace::make_root() {
    std::vector<std::string> missing{directory_};
    std::filesystem::path path = std::filesystem::path(directory_).parent_path();
    for (; ::access(path.c_str(), F_OK) != 0 && errno == ENOENT; path = path.parent_path()) missing.push_back(path);
    std::for_each(missing.rbegin(), missing.rend(), [&](const std::string& each) { make_directory(each, kOfAll); });
}

// One run at a time: what another one has found must not be cleared away by this one.
void WorkingPlace::lock_root() {
    root_.emplace(::open(directory_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!*root_ || ::flock(root_->get(), LOCK_EX) != 0) {
        throw Failure::of_system_call(Exit::cannot_create, directory_);
    }
}

void WorkingPlace::make_directory(const std::string& path, mode_t mode) {
    if (::mkdir(path.c_str(), mode) == 0) {
        made_.push_back(path);
    } else if (errno != EEXIST) {
        throw Failure::of_system_call(Exit::cannot_create, path);
    } else if (std::error_code failed; !std::filesystem::is_directory(path, failed)) {
        throw Failure(Exit::cannot_create, path + ": is not a directory");
    }
}

void WorkingPlace::make_queue() {
    const std::string path = queue();
    const SettingInForce there("Gateway", "QueueDirectory", path.c_str());
    connect_to_queue(session_);
}

void WorkingPlace::make_types() {
    if (!copy_seeds(install())) {
        session_.output.complain({}, "no file types: the seeds of their table are not installed beside the command");
        return;
    }
    const SettingInForce queue_there("Gateway", "QueueDirectory", queue().c_str());
    const SettingInForce install_there("Config", "InstallDirectory", install().c_str());
    const TypesTable made(session_);
}

void WorkingPlace::write_ini(const std::string& settings) {
    ScratchFile writer(session_.scratch.below(directory_));
    writer.write(settings);
    const PrivateFile whole = writer.finish();
    const char* file = whole.path().c_str();
    const auto held = session_.scratch.hold();
    const bool placed = ::fsync(open_for_reading(file).get()) == 0 && ::chmod(file, mode_of_new_files()) == 0 &&
                        place_new(file, ini().c_str());
    if (!placed) throw Failure::of_system_call(Exit::cannot_create, ini());
}

}  // namespace vel::command
