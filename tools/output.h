// Standard output, written in blocks and with every failure noticed; messages on standard error.
#ifndef VEL_TOOLS_OUTPUT_H
#define VEL_TOOLS_OUTPUT_H

#include <string>
#include <string_view>

namespace vel::command {

// The reader of standard output has gone: no failure, but nothing is left to do.
struct BrokenPipe {};

class Output {
  public:
    enum class WithoutReader { stop, go_on };

    explicit Output(int fd, WithoutReader without_reader = WithoutReader::stop)
        : fd_(fd), without_reader_(without_reader) {}

    // Both throw BrokenPipe, unless told to go on in silence, or Failure for any other error.
    void write(std::string_view bytes);
    void flush();

  private:
    int fd_;
    WithoutReader without_reader_;
    std::string waiting_;
};

// Writes "vel: name: text", escaped, to standard error; "vel: text" without a name.
void complain(std::string_view name, std::string_view text);

}  // namespace vel::command

#endif
