// How far a long run is, on a terminal: one line on standard error that is drawn over itself.
#ifndef VEL_TOOLS_IO_PROGRESS_H
#define VEL_TOOLS_IO_PROGRESS_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

#include "tools/io/streams.h"

namespace vel::command {

// Draws nothing before half a second has passed, nothing at all when standard error is no terminal, inside
// another one, or where one file is all there is to count. Any thread may call. For a file that is read in one go:
//   Progress progress(session.output.streams(), Progress::Unit::bytes, size);
//   progress.advance(block.size());
class Progress {
  public:
    enum class Unit { files, bytes };

    // total 0: not known
    Progress(Streams& streams, Unit unit, uint64_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();  // erases the line

    // So much more is done; draws the line when it is time to.
    void advance(uint64_t more) {
        if (!draws_) return;
        done_ += more;
        tick();
    }

    void tick();

  private:
    using Clock = std::chrono::steady_clock;
    std::string line(Clock::duration spent) const;

    Streams& streams_;
    const Unit unit_;
    const uint64_t total_;
    const bool draws_;
    const Clock::time_point start_ = Clock::now();
    std::atomic<uint64_t> done_ = 0;
    std::mutex mutex_;
    Clock::time_point next_;  // when to draw again
};

// "1234 of 56789 files, 12 s left", without the "vel: " before it. spent is in seconds.
std::string progress_text(Progress::Unit unit, uint64_t done, uint64_t total, double spent);

}  // namespace vel::command

#endif
