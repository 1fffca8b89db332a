#include "tools/output.h"

#include <unistd.h>

#include <cerrno>

#include "tools/descriptor.h"
#include "tools/exit_code.h"
#include "tools/text_forms.h"

namespace vel::command {

void Output::write(std::string_view bytes) {
    waiting_ += bytes;
    if (waiting_.size() >= kBlock) flush();
}

void Output::flush() {
    const bool written = write_all(fd_, waiting_);
    waiting_.clear();
    if (written) return;
    if (errno == EPIPE && without_reader_ == WithoutReader::go_on) return;
    if (errno == EPIPE) throw BrokenPipe{};
    throw Failure::of_system_call(Exit::io_error, "standard output");
}

void complain(std::string_view name, std::string_view text) {
    std::string line = "vel: ";
    if (!name.empty()) line.append(visible(name)).append(": ");
    line.append(visible(text)).append("\n");
    write_all(STDERR_FILENO, line);
}

}  // namespace vel::command
