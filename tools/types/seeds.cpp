#include "tools/types/seeds.h"

#include <filesystem>

#include "tools/io/exit_code.h"

namespace vel::command {
namespace {

// They lie where they do from the program, wherever the installed tree has been moved.
std::filesystem::path installed_seeds() {
    std::error_code failed;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failed);
    return failed ? std::filesystem::path() : program.parent_path() / VEL_SEEDS_FROM_PROGRAM;
}

}  // namespace

bool copy_seeds(const std::string& directory) {
    namespace fs = std::filesystem;
    const fs::path from = installed_seeds();
    const fs::path to = fs::path(directory) / "srcdb";
    std::error_code failed;
    if (fs::exists(to, failed)) return true;
    if (!fs::exists(from / "magicdb.db", failed)) return false;
    const fs::path whole = fs::path(directory) / "srcdb.new";
    const auto fail = [&] { throw Failure(Exit::cannot_create, to.string() + ": " + failed.message()); };
    fs::copy(from, whole, fs::copy_options::recursive | fs::copy_options::overwrite_existing, failed);
    if (failed) fail();
    fs::rename(whole, to, failed);
    if (failed) fail();
    return true;
}

}  // namespace vel::command
