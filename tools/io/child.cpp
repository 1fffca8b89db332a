#include "tools/io/child.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "tools/io/exit_code.h"

namespace vel::command {
namespace {

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

void take_default_signals() {
    for (int signal = 1; signal < NSIG; ++signal) std::signal(signal, SIG_DFL);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

// One that stands in its place already would be closed by exec.
bool put_in_place(int fd, int place) { return fd == place ? ::fcntl(fd, F_SETFD, 0) == 0 : ::dup2(fd, place) == place; }

bool take_descriptors(const std::vector<int>& descriptors) {
    int place = 0;
    for (const int fd : descriptors) {
        if (!put_in_place(fd, place++)) return false;
    }
    ::close_range(static_cast<unsigned>(place), ~0U, 0);
    return true;
}

[[noreturn]] void give_up() {
    const char* const reason = ::strerrordesc_np(errno);
    write_all(STDERR_FILENO, "cannot be run: ") && write_all(STDERR_FILENO, reason ? reason : "unknown error");
    ::_exit(kCannotRun);
}

// The child's part, between fork and exec, where nothing may be allocated.
[[noreturn]] void become(const Launch& launch, char* const* arguments, char* const* environment, pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(kCannotRun);  // which has died before the line above
    ::setsid();
    take_default_signals();
    if (!take_descriptors(launch.descriptors)) give_up();
    if (launch.confine) launch.confine();
    ::execve(launch.program.c_str(), arguments, environment);
    give_up();
}

pid_t started(const Launch& launch) {
    const TextArray arguments(launch.arguments), environment(launch.environment);
    const pid_t parent = ::getpid();
    std::signal(SIGCHLD, SIG_DFL);  // a caller that has us ignore it would take the exit codes away
    const pid_t process = ::fork();
    if (process == 0) become(launch, arguments.get(), environment.get(), parent);
    if (process == -1) throw Failure::of_system_call(Exit::io_error, launch.program);
    return process;
}

}  // namespace

Child::Child(const Launch& launch)
    : process_(started(launch)), end_(static_cast<int>(::syscall(SYS_pidfd_open, process_, 0))) {}

Child::~Child() {
    if (process_ == -1) return;
    signal(SIGKILL);
    while (::waitpid(process_, nullptr, 0) == -1 && errno == EINTR) {
    }
}

std::optional<int> Child::ended() {
    siginfo_t end{};
    const auto process = static_cast<id_t>(process_);
    if (::waitid(P_PID, process, &end, WEXITED | WNOHANG | WNOWAIT) != 0 || end.si_pid == 0) return std::nullopt;
    if (is_told_) ::kill(-process_, SIGKILL);  // until it is waited for, no other group has its number
    int status = 0;
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return status;
}

// Its group is there only when it has come so far.
void Child::signal(int number) {
    is_told_ = true;
    ::kill(-process_, number);
    ::kill(process_, number);
}

Pipe new_pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw Failure::of_system_call(Exit::io_error, "");
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

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

}  // namespace vel::command
