#include "tools/io/filter.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <thread>
#include <utility>

#include "tools/io/blocks.h"
#include "tools/io/exit_code.h"
#include "tools/io/scratch_file.h"

namespace vel::command {
namespace {

constexpr rlim_t kMemory = rlim_t{1} << 30;  // of an address space: what a hostile page may make it take
constexpr int kCannotRun = 127;              // as a shell says it
constexpr const char* kTooLong = "does not end in time";
constexpr int kFirstOfOurs = STDERR_FILENO + 1;

std::string_view base_name(std::string_view path) { return path.substr(path.rfind('/') + 1); }

Failure failure_of(const std::string& program, const std::string& what) {
    return {Exit::io_error, std::string(base_name(program)).append(" ").append(what)};
}

// Texts as exec wants them.
class TextArray {
  public:
    explicit TextArray(std::vector<std::string> texts) : texts_(std::move(texts)) {
        for (std::string& text : texts_) pointers_.push_back(text.data());
        pointers_.push_back(nullptr);
    }
    TextArray(const TextArray&) = delete;
    TextArray& operator=(const TextArray&) = delete;
    char* const* get() const { return pointers_.data(); }

  private:
    std::vector<std::string> texts_;
    std::vector<char*> pointers_;
};

// What the child needs, made before there is one: between fork and exec nothing may be allocated.
struct Launch {
    const char* program;
    char* const* arguments;
    char* const* environment;
    int in, out, error;
    pid_t parent;
};

void limit(int resource, rlim_t most) {
    const rlimit both{most, most};
    ::setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

void take_default_signals() {
    for (const int signal : {SIGPIPE, SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

// The child's part. Taking the network away fails where the system forbids it; the program is told to fetch
// nothing all the same.
[[noreturn]] void become(const Launch& launch) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const bool orphaned = ::getppid() != launch.parent;
    ::setsid();
    take_default_signals();
    limit(RLIMIT_AS, kMemory);
    limit(RLIMIT_CORE, 0);
    const bool connected = ::dup2(launch.in, STDIN_FILENO) != -1 && ::dup2(launch.out, STDOUT_FILENO) != -1 &&
                           ::dup2(launch.error, STDERR_FILENO) != -1;
    ::close_range(kFirstOfOurs, ~0U, 0);
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) errno = 0;
    if (connected && !orphaned) ::execve(launch.program, launch.arguments, launch.environment);
    ::_exit(kCannotRun);
}

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetweenLooks{1};  // at a child that has said all it has to say

// A child with a session of its own, killed with all that is in it when it is not waited for.
class Child {
  public:
    explicit Child(const Launch& launch) : process_(::fork()) {
        if (process_ == 0) become(launch);
        if (process_ == -1) throw Failure::of_system_call(Exit::io_error, launch.program);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() {
        if (process_ == -1) return;
        ::kill(-process_, SIGKILL);
        ::kill(process_, SIGKILL);
        while (::waitpid(process_, nullptr, 0) == -1 && errno == EINTR) {
        }
    }

    // How it ended, as waitpid has it; nothing when the time is up.
    std::optional<int> wait(Clock::time_point end) {
        int status = 0;
        while (::waitpid(process_, &status, WNOHANG) != process_) {
            if (Clock::now() > end) return std::nullopt;
            std::this_thread::sleep_for(kBetweenLooks);
        }
        process_ = -1;
        return status;
    }

  private:
    pid_t process_;
};

Descriptor opened(const char* path, int flags) {
    Descriptor file(::open(path, flags | O_CLOEXEC));
    if (!file) throw Failure::of_system_call(Exit::io_error, path);
    return file;
}

struct Pipe {
    Descriptor reading, writing;
};

Pipe new_pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw Failure::of_system_call(Exit::io_error, "");
    return {Descriptor(ends[0]), Descriptor(ends[1])};
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

std::optional<std::string> find_program(std::string_view name) {
    const char* const path = std::getenv("PATH");
    std::string_view left = path ? path : "";
    while (!left.empty()) {
        const std::string_view directory = left.substr(0, left.find(':'));
        left.remove_prefix(std::min(left.size(), directory.size() + 1));
        const std::string program = std::string(directory).append("/").append(name);
        if (directory.starts_with('/') && ::access(program.c_str(), X_OK) == 0) return program;
    }
    return std::nullopt;
}

PrivateFile filtered(const std::string& file, const std::string& program, const std::vector<std::string>& arguments,
                     Scratch& scratch, const FilterLimits& limits) {
    std::vector<std::string> all{std::string(base_name(program))};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const TextArray argv(std::move(all));
    const TextArray environment({"PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8", "TERM=dumb", "HOME=" + scratch.directory()});
    const Descriptor in = open_for_reading(file), nowhere = opened("/dev/null", O_WRONLY);
    const Clock::time_point end = Clock::now() + limits.time;
    ScratchFile result(scratch);
    std::optional<Pipe> pipe = new_pipe();
    const Descriptor out = std::move(pipe->reading);
    Child child(
        {program.c_str(), argv.get(), environment.get(), in.get(), pipe->writing.get(), nowhere.get(), ::getpid()});
    pipe.reset();
    read_all(out.get(), program, end, limits.bytes, result);
    const std::optional<int> status = child.wait(end);
    if (!status) throw failure_of(program, kTooLong);
    if (!WIFEXITED(*status) || WEXITSTATUS(*status) != 0) throw failure_of(program, "fails");
    return result.finish();
}

}  // namespace vel::command
