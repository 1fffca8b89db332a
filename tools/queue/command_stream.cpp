#include "tools/queue/command_stream.h"

#include <fcntl.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr std::size_t kPiece = 4096;
constexpr int kMostPieces = 256;  // what a pipe holds at most unless root says otherwise, 1 MiB

}  // namespace

CommandStream::CommandStream(OnLine on_line) : CommandStream(new_pipe(), std::move(on_line)) {}

CommandStream::CommandStream(Pipe pipe, OnLine on_line)
    : reading_(std::move(pipe.reading)), writing_(std::move(pipe.writing)), on_line_(std::move(on_line)) {
    ::fcntl(reading_.get(), F_SETFL, O_NONBLOCK);
}

void CommandStream::listen(CommandStream& output, CommandStream& errors, int other, std::chrono::milliseconds time) {
    std::array<pollfd, 3> wanted{pollfd{output.to_poll(), POLLIN, 0}, pollfd{errors.to_poll(), POLLIN, 0},
                                 pollfd{other, POLLIN, 0}};
    if (::poll(wanted.data(), wanted.size(), static_cast<int>(time.count())) <= 0) return;
    if (wanted[0].revents != 0) output.read_some();
    if (wanted[1].revents != 0) errors.read_some();
}

void CommandStream::finish() {
    for (int i = 0; i < kMostPieces && read_some(); ++i) {
    }
    if (!line_.empty()) end_line();
}

bool CommandStream::read_some() {
    std::array<char, kPiece> piece;
    const ssize_t got = read_block(reading_.get(), piece.data(), piece.size());
    if (got > 0) take({piece.data(), static_cast<std::size_t>(got)});
    ended_ = got == 0 || (got < 0 && errno != EAGAIN);
    return got > 0;
}

void CommandStream::take(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t room = kLongestLine - line_.size();
        const std::size_t end = std::min({bytes.find('\n'), room, bytes.size()});
        line_.append(bytes.substr(0, end));
        const bool breaks = end < bytes.size() && bytes[end] == '\n';
        bytes.remove_prefix(end + (breaks ? 1 : 0));
        if (breaks || line_.size() == kLongestLine) end_line();
    }
}

void CommandStream::end_line() {
    const std::string_view text = std::string_view(line_).substr(0, line_.find_last_not_of(kBlanks) + 1);
    if (!text.empty()) {
        on_line_(text);
        last_ = trimmed(text);
    }
    line_.clear();
}

}  // namespace vel::command
