// Whose turn it is to write, when several files are worked on at once.
#ifndef VEL_TOOLS_IO_TURNS_H
#define VEL_TOOLS_IO_TURNS_H

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <map>
#include <mutex>

#include "tools/io/streams.h"

namespace vel::command {

// The run is over before its time; whoever waits for a turn is sent home with it.
struct Stopped {};

// Files have their turns in the order of their places, 0, 1, 2 and so on. Each place must be finished by
// somebody, and places must be begun in their order: then whoever waits is served.
class Turns {
  public:
    explicit Turns(Streams& streams) : streams_(streams) {}

    Streams& streams() { return streams_; }

    bool has(std::size_t place) const { return current_ == place; }

    // Waits for the turn. Throws Stopped.
    void await(std::size_t place);

    // Ends a place: writes its pieces now or leaves them to whoever has the turn before it. Waits while too
    // much has been left already. Throws Stopped and BrokenOutput.
    void finish(std::size_t place, Pieces pieces);

    void stop();
    bool is_stopped() const { return stopped_; }

  private:
    bool leave(std::size_t place, Pieces& pieces);
    bool pass_on(Pieces& next);

    Streams& streams_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::atomic<std::size_t> current_ = 0;
    std::atomic<bool> stopped_ = false;
    std::map<std::size_t, Pieces> left_;
    std::size_t left_size_ = 0;
};

}  // namespace vel::command

#endif
