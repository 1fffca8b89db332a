// Cleaning up when a signal ends the command.
#ifndef VEL_TOOLS_IO_INTERRUPTION_H
#define VEL_TOOLS_IO_INTERRUPTION_H

#include <atomic>
#include <functional>
#include <thread>

namespace vel::command {

// While this lives, SIGINT, SIGTERM and SIGHUP are awaited by a thread of their own, where anything may
// be called: it cleans up, then lets the signal end the process as if nobody had waited. Signals that
// were ignored at start stay ignored (nohup). To be made before any other thread.
class Interruption {
  public:
    explicit Interruption(std::function<void()> clean_up);
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

  private:
    void await();

    std::function<void()> clean_up_;
    std::atomic<bool> over_ = false;
    std::thread thread_;
};

// While this lives, SIGINT, SIGTERM and SIGHUP do not end the command: they are handed to a function, on the thread that
// awaits them. One at a time.
class TakenSignals {
  public:
    explicit TakenSignals(std::function<void(int signal)> take);
    TakenSignals(const TakenSignals&) = delete;
    TakenSignals& operator=(const TakenSignals&) = delete;
    ~TakenSignals();
};

// Ends the process by a signal's default action.
void die_of(int signal);

}  // namespace vel::command

#endif
