#include "tools/io/filter.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <memory>
#include <thread>
#include <utility>

#include "tools/io/blocks.h"
#include "tools/io/child.h"
#include "tools/io/exit_code.h"
#include "tools/io/scratch_file.h"

namespace vel::command {
namespace {

constexpr rlim_t kMemory = rlim_t{1} << 30;  // of an address space: what a hostile page may make it take
constexpr const char* kTooLong = "does not end in time";

std::string_view base_name(std::string_view path) { return path.substr(path.rfind('/') + 1); }

Failure failure_of(const std::string& program, const std::string& what) {
    return {Exit::io_error, std::string(base_name(program)).append(" ").append(what)};
}

void limit(int resource, rlim_t most) {
    const rlimit both{most, most};
    ::setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

// Taking the network away fails where the system forbids it; the program is told to fetch nothing all the same.
void confine() {
    limit(RLIMIT_AS, kMemory);
    limit(RLIMIT_CORE, 0);
    static_cast<void>(::unshare(CLONE_NEWUSER | CLONE_NEWNET));
}

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetweenLooks{1};  // at a child that has said all it has to say

// Nothing when the time is up.
std::optional<int> wait_for(Child& child, Clock::time_point end) {
    for (;;) {
        if (const std::optional<int> status = child.ended()) return status;
        if (Clock::now() > end) return std::nullopt;
        std::this_thread::sleep_for(kBetweenLooks);
    }
}

Descriptor opened(const char* path, int flags) {
    Descriptor file(::open(path, flags | O_CLOEXEC));
    if (!file) throw Failure::of_system_call(Exit::io_error, path);
    return file;
}

// Waits for something to read, or the end. False when the time is up.
bool await(int fd, Clock::time_point end) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        if (left.count() <= 0) return false;
        pollfd wanted{fd, POLLIN, 0};
        if (::poll(&wanted, 1, static_cast<int>(left.count())) > 0) return true;
    }
}

void read_all(int fd, const std::string& program, Clock::time_point end, uint64_t most, ScratchFile& result) {
    const auto block = std::make_unique<char[]>(kBlock);
    for (;;) {
        if (!await(fd, end)) throw failure_of(program, kTooLong);
        const ssize_t got = read_block(fd, block.get(), kBlock);
        if (got < 0) throw Failure::of_system_call(Exit::io_error, program);
        if (got == 0) return;
        result.write({block.get(), static_cast<std::size_t>(got)});
        if (result.size() > most) throw failure_of(program, "writes too much");
    }
}

}  // namespace

PrivateFile filtered(const std::string& file, const std::string& program, const std::vector<std::string>& arguments,
                     Scratch& scratch, const FilterLimits& limits) {
    std::vector<std::string> all{std::string(base_name(program))};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const Descriptor in = open_for_reading(file), nowhere = opened("/dev/null", O_WRONLY);
    const Clock::time_point end = Clock::now() + limits.time;
    ScratchFile result(scratch);
    std::optional<Pipe> pipe = new_pipe();
    const Descriptor out = std::move(pipe->reading);
    Child child({program,
                 std::move(all),
                 {"PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8", "TERM=dumb", "HOME=" + scratch.directory()},
                 {in.get(), pipe->writing.get(), nowhere.get()},
                 confine});
    pipe.reset();
    read_all(out.get(), program, end, limits.bytes, result);
    const std::optional<int> status = wait_for(child, end);
    if (!status) throw failure_of(program, kTooLong);
    if (!WIFEXITED(*status) || WEXITSTATUS(*status) != 0) throw failure_of(program, "fails");
    return result.finish();
}

}  // namespace vel::command
