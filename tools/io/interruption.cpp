#include "tools/io/interruption.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <utility>

namespace vel::command {
namespace {

constexpr std::array kEndings{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGUSR1, SIGUSR2, SIGXCPU, SIGXFSZ, SIGVTALRM};
constexpr std::array kTaken{SIGINT, SIGTERM, SIGHUP};
constexpr int kWakeUp = SIGTERM;  // ends the wait too, when over_ says so
constexpr int kSignalled = 128;   // what a shell adds to a signal's number

std::mutex taker_lock;
std::function<void(int)> taker;

bool is_taken(int signal) {
    const std::lock_guard held(taker_lock);
    if (!taker || std::count(kTaken.begin(), kTaken.end(), signal) == 0) return false;
    taker(signal);
    return true;
}

bool is_ignored(int signal) {
    struct sigaction action {};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

template <class Signals>
sigset_t set_of(const Signals& signals) {
    sigset_t set;
    ::sigemptyset(&set);
    for (const int signal : signals) ::sigaddset(&set, signal);
    return set;
}

}  // namespace

void die_of(int signal) {
    std::signal(signal, SIG_DFL);
    const sigset_t it = set_of(std::array{signal});
    ::pthread_sigmask(SIG_UNBLOCK, &it, nullptr);
    std::raise(signal);
    std::_Exit(kSignalled + signal);
}

Interruption::Interruption(std::function<void()> clean_up) : clean_up_(std::move(clean_up)) {
    const sigset_t signals = set_of(kEndings);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    thread_ = std::thread([this] { await(); });
}

Interruption::~Interruption() {
    over_ = true;
    ::pthread_kill(thread_.native_handle(), kWakeUp);
    thread_.join();
}

TakenSignals::TakenSignals(std::function<void(int signal)> take) {
    const std::lock_guard held(taker_lock);
    taker = std::move(take);
}

TakenSignals::~TakenSignals() {
    const std::lock_guard held(taker_lock);
    taker = nullptr;
}

void Interruption::await() {
    const sigset_t signals = set_of(kEndings);
    int signal = 0;
    do {
        if (::sigwait(&signals, &signal) != 0) return;
        if (over_) return;
    } while (is_ignored(signal) || is_taken(signal));
    clean_up_();
    die_of(signal);
}

}  // namespace vel::command
