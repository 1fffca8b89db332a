// What the work on one file writes: data for standard output, messages for standard error.
#ifndef VEL_TOOLS_IO_OUTPUT_H
#define VEL_TOOLS_IO_OUTPUT_H

#include <cstddef>
#include <string_view>

#include "tools/io/streams.h"
#include "tools/io/turns.h"

namespace vel::command {

// Both kinds leave in the order in which they were written. While another file has the turn they are kept,
// up to a limit, beyond which writing waits. All calls but has_turn throw BrokenOutput, and Stopped where
// there are turns.
class Output {
  public:
    explicit Output(Streams& streams) : streams_(streams) {}  // has the turn, always
    Output(Turns& turns, std::size_t place) : streams_(turns.streams()), turns_(&turns), place_(place) {}
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void write(std::string_view bytes);

    // Writes "vel: name: text", escaped, to standard error; "vel: text" without a name.
    void complain(std::string_view name, std::string_view text);

    // Lets go of what is kept, if it has the turn.
    void flush();

    // Whether what is written leaves at once. Once it has the turn it keeps it to its end.
    bool has_turn() const { return !turns_ || turns_->has(place_); }

    // For work whose order counts: where files are placed, what is left of a limit, standard input.
    void wait_for_turn();

    // The end of a file's work: the next one has its turn.
    void finish();

    Streams& streams() { return streams_; }

  private:
    void add(int fd, std::string_view bytes, std::size_t room);

    Streams& streams_;
    Turns* turns_ = nullptr;
    std::size_t place_ = 0;
    Pieces kept_;
};

}  // namespace vel::command

#endif
