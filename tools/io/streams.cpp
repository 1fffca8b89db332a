#include "tools/io/streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "tools/io/descriptor.h"

namespace vel::command {
namespace {

constexpr std::string_view kBegin = "\r";
constexpr std::string_view kEraseRest = "\x1b[K";

}  // namespace

void Pieces::add(int fd, std::string_view bytes) {
    if (bytes.empty()) return;
    if (all_.empty() || all_.back().fd != fd) all_.push_back({fd, {}});
    all_.back().bytes += bytes;
    size_ += bytes.size();
}

bool Pieces::has(int fd) const {
    return std::any_of(all_.begin(), all_.end(), [&](const Piece& piece) { return piece.fd == fd; });
}

void occupy_standard_descriptors() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(fd, F_GETFD) != -1 || errno != EBADF) continue;
        if (::open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY) != fd) return;  // the lowest free number
    }
}

void Streams::write(const Pieces& pieces) {
    const std::lock_guard held(mutex_);
    if (silent_ || pieces.empty()) return;
    if (shares_terminal_ || pieces.has(STDERR_FILENO)) erase();
    for (const Pieces::Piece& piece : pieces.all_) write_locked(piece.fd, piece.bytes);
}

// A message that nobody takes is lost; there is no place to say so.
void Streams::write_locked(int fd, std::string_view bytes) {
    if (fd == STDOUT_FILENO && lost_) return;
    if (!write_all(fd, bytes) && fd == STDOUT_FILENO) break_off(errno);
}

void Streams::break_off(int error) {
    lost_ = true;
    if (!goes_on_) throw BrokenOutput{error};
    if (error == EPIPE) return;
    failed_ = true;
    write_all(STDERR_FILENO, "vel: standard output: " + std::generic_category().message(error) + "\n");
}

Streams::Streams() : shares_terminal_(::isatty(STDOUT_FILENO) == 1) {}

bool Streams::can_draw() {
    const char* terminal = std::getenv("TERM");
    return ::isatty(STDERR_FILENO) == 1 && terminal && *terminal && std::string_view(terminal) != "dumb";
}

void Streams::draw(std::string_view line) {
    const std::lock_guard held(mutex_);
    if (silent_) return;
    if (line.empty()) return erase();
    drawn_ = true;
    write_all(STDERR_FILENO, std::string(kBegin).append(line).append(kEraseRest));
}

void Streams::erase() {
    if (drawn_) write_all(STDERR_FILENO, std::string(kBegin).append(kEraseRest));
    drawn_ = false;
}

void Streams::silence() {
    silent_ = true;
    const std::unique_lock held(mutex_, std::try_to_lock);
    if (held) erase();
}

}  // namespace vel::command
