// What signals ask of a run.
#ifndef VEL_TOOLS_QUEUE_STOP_REQUEST_H
#define VEL_TOOLS_QUEUE_STOP_REQUEST_H

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace vel::command {

// The first request asks for an end when what is being done is done, a second signal for one now. Any thread.
class StopRequest {
  public:
    void add(int signal) {
        {
            const std::lock_guard held(mutex_);
            if (asked_) signal_ = signal;
            asked_ = true;
        }
        changed_.notify_all();
    }

    // The second signal, for the commands that run; 0 until it comes.
    int signal() const {
        const std::lock_guard held(mutex_);
        return signal_;
    }

    bool asked() const {
        const std::lock_guard held(mutex_);
        return asked_;
    }

    // Waits so long, or until it is asked for. Whether it is.
    bool wait(std::chrono::milliseconds time) {
        std::unique_lock held(mutex_);
        return changed_.wait_for(held, time, [this] { return asked_; });
    }

  private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool asked_ = false;
    int signal_ = 0;
};

}  // namespace vel::command

#endif
