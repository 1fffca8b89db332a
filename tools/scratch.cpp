#include "tools/scratch.h"

#include <cstdlib>

#include <chrono>
#include <filesystem>
#include <thread>

#include "tools/exit_code.h"

namespace vel::command {
namespace {

// While another thread still writes, a directory may fill again under the hand that empties it.
constexpr int kRemovalAttempts = 100;
constexpr std::chrono::milliseconds kBetweenAttempts{1};

std::string usual_parent() {
    const char* parent = std::getenv("TMPDIR");
    return parent && *parent ? parent : "/tmp";
}

}  // namespace

Scratch::Scratch() : parent_(usual_parent()) {}

Scratch::~Scratch() { remove(); }

void Scratch::place_below(const std::string& parent) {
    const auto held = hold();
    remove();
    parent_ = parent;
}

const std::string& Scratch::directory() {
    const auto held = hold();
    if (!directory_.empty()) return directory_;
    std::string pattern = parent_ + "/.vel-XXXXXX";
    if (!::mkdtemp(pattern.data())) throw Failure::of_system_call(Exit::cannot_create, pattern);
    return directory_ = pattern;
}

std::string Scratch::new_path() {
    const std::string& where = directory();
    return where + "/copy-" + std::to_string(++count_);
}

void Scratch::abandon() {
    mutex_.lock();
    remove();
}

void Scratch::remove() {
    if (directory_.empty()) return;
    std::error_code failed;
    for (int attempt = 0; attempt < kRemovalAttempts; ++attempt) {
        std::filesystem::remove_all(directory_, failed);
        if (!failed) break;
        std::this_thread::sleep_for(kBetweenAttempts);
    }
    directory_.clear();
}

PrivateFile::~PrivateFile() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove(path_, ignored);
}

}  // namespace vel::command
