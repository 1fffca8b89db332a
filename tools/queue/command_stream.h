// What a command writes to its standard output, or to its standard error.
#ifndef VEL_TOOLS_QUEUE_COMMAND_STREAM_H
#define VEL_TOOLS_QUEUE_COMMAND_STREAM_H

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "tools/io/child.h"

namespace vel::command {

// Hands each line on, and remembers the last one that is not blank. A line longer than kLongestLine comes in pieces.
class CommandStream {
  public:
    using OnLine = std::function<void(std::string_view)>;
    static constexpr std::size_t kLongestLine = 1000;

    explicit CommandStream(OnLine on_line);  // throws Failure

    // For the command; to be given up when it has been started.
    int writing_end() const { return writing_.get(); }
    void close_writing_end() { ::close(writing_.release()); }

    // Waits so long for something to come on either, which is taken, or for another descriptor that can be read.
    static void listen(CommandStream& output, CommandStream& errors, int other, std::chrono::milliseconds time);

    // Takes what has come until now. The pipe may be open still, at something that the command has left behind.
    void finish();

    const std::string& last_line() const { return last_; }

  private:
    CommandStream(Pipe pipe, OnLine on_line);
    int to_poll() const { return ended_ ? -1 : reading_.get(); }
    bool read_some();
    void take(std::string_view bytes);
    void end_line();

    Descriptor reading_, writing_;
    OnLine on_line_;
    bool ended_ = false;
    std::string line_, last_;
};

}  // namespace vel::command

#endif
