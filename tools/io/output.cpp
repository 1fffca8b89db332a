#include "tools/io/output.h"

#include <unistd.h>

#include <string>
#include <utility>

#include "tools/io/descriptor.h"
#include "tools/text/text_forms.h"

namespace vel::command {
namespace {

constexpr std::size_t kKeptAhead = std::size_t{1} << 20;  // of a file that waits for its turn

}  // namespace

void Output::write(std::string_view bytes) { add(STDOUT_FILENO, bytes, kBlock); }

void Output::complain(std::string_view name, std::string_view text) {
    std::string line = "vel: ";
    if (!name.empty()) line.append(visible(name)).append(": ");
    line.append(visible(text)).append("\n");
    add(STDERR_FILENO, line, 0);
}

void Output::add(int fd, std::string_view bytes, std::size_t room) {
    kept_.add(fd, bytes);
    if (kept_.size() >= kKeptAhead) wait_for_turn();
    if (kept_.size() >= room) flush();
}

void Output::flush() {
    if (has_turn()) streams_.write(std::exchange(kept_, {}));
}

void Output::wait_for_turn() {
    if (turns_) turns_->await(place_);
}

void Output::finish() {
    if (turns_) {
        turns_->finish(place_, std::exchange(kept_, {}));
    } else {
        flush();
    }
}

}  // namespace vel::command
