#include "tools/io/scratch.h"

#include <cstdio>
#include <cstdlib>

#include <chrono>
#include <filesystem>
#include <thread>

#include "tools/io/exit_code.h"

namespace vel::command {
namespace {

constexpr const char* kDoomed = "-";

// A thread that was about to make a file in the directory may still do so.
constexpr int kRemovalAttempts = 100;
constexpr std::chrono::milliseconds kBetweenAttempts{1};

std::string usual_parent() {
    const char* parent = std::getenv("TMPDIR");
    return parent && *parent ? parent : "/tmp";
}

void make_with_parents(const std::string& directory) {
    std::error_code failed;
    std::filesystem::create_directories(directory, failed);
    if (failed) throw Failure(Exit::cannot_create, directory + ": " + failed.message());
}

}  // namespace

Scratch::Scratch() = default;

Scratch::~Scratch() { remove(); }

Scratch& Scratch::below(const std::string& parent) {
    const auto held = hold();
    return others_.emplace_back(parent);
}

const std::string& Scratch::directory() {
    const auto held = hold();
    return made();
}

std::string Scratch::new_path() {
    const auto held = hold();
    return made() + "/copy-" + std::to_string(++count_);
}

const std::string& Scratch::made() {
    if (!directory_.empty()) return directory_;
    if (!parent_.empty()) make_with_parents(parent_);
    const std::string parent = parent_.empty() ? usual_parent() : parent_;
    std::string pattern = parent + "/.vel-XXXXXX";
    if (!::mkdtemp(pattern.data())) {
        const std::string what = parent_.empty() ? "no temporary files in " + parent + " (TMPDIR)" : parent;
        throw Failure::of_system_call(Exit::cannot_create, what);
    }
    return directory_ = pattern;
}

void Scratch::abandon() {
    mutex_.lock();
    for (Scratch& other : others_) other.abandon();
    remove();
}

void Scratch::remove() {
    if (directory_.empty()) return;
    // Under another name, threads that still write no longer find it.
    std::string doomed = directory_ + kDoomed;
    if (std::rename(directory_.c_str(), doomed.c_str()) != 0) doomed = directory_;
    std::error_code failed;
    for (int attempt = 0; attempt < kRemovalAttempts; ++attempt) {
        std::filesystem::remove_all(doomed, failed);
        if (!failed) break;
        std::this_thread::sleep_for(kBetweenAttempts);
    }
}

PrivateFile::~PrivateFile() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove(path_, ignored);
}

}  // namespace vel::command
