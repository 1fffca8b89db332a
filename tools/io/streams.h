// Standard output and standard error of the process.
#ifndef VEL_TOOLS_IO_STREAMS_H
#define VEL_TOOLS_IO_STREAMS_H

#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "tools/io/exit_code.h"

namespace vel::command {

// Standard output takes nothing more (EPIPE: its reader has gone), so nothing is left to do.
struct BrokenOutput {
    int error;  // errno
};

// What goes to the two streams, in its order.
class Pieces {
  public:
    void add(int fd, std::string_view bytes);
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    bool has(int fd) const;

  private:
    friend class Streams;
    struct Piece {
        int fd;
        std::string bytes;
    };
    std::vector<Piece> all_;
    std::size_t size_ = 0;
};

// Opens what the caller has closed of descriptors 0, 1 and 2, so that reading or writing it fails and no
// other file ends up under its number. To be called before any file is opened.
void occupy_standard_descriptors();

// Any thread may call any of these.
class Streams {
  public:
    Streams();

    // From now on standard output that breaks does not end the run. A reader that has gone is no failure
    // then; any other error is told once and counts in the end.
    void go_on_without_reader() { goes_on_ = true; }
    Exit exit() const { return failed_ ? Exit::io_error : Exit::success; }

    // Throws BrokenOutput, once, unless told to go on.
    void write(const Pieces& pieces);

    // Takes the status line for the caller. False when somebody has it or it cannot be drawn: standard error
    // must be a terminal that can.
    bool take_status_line() { return can_draw() && !taken_.exchange(true); }
    void give_back_status_line() { taken_ = false; }

    // Draws a line over the last one; whatever comes to the terminal next erases it. Empty: erases it.
    void draw(std::string_view line);

    // Lets nothing more be written: for a run that is being interrupted, whose threads would complain
    // about what is taken away under their hands. Does not wait for a writer that is blocked.
    void silence();

  private:
    void write_locked(int fd, std::string_view bytes);
    static bool can_draw();
    void erase();
    void break_off(int error);

    std::mutex mutex_;
    const bool shares_terminal_;  // standard output is a terminal too, so what goes there meets the line
    bool drawn_ = false;
    std::atomic<bool> taken_ = false;
    std::atomic<bool> silent_ = false;
    std::atomic<bool> goes_on_ = false;
    std::atomic<bool> failed_ = false;
    bool lost_ = false;  // nobody takes standard output any more
};

}  // namespace vel::command

#endif
