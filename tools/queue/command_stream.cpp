#include "tools/queue/error_stream.h"

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

ErrorStream::ErrorStream(OnLine on_line) : ErrorStream(new_pipe(), std::move(on_line)) {}

ErrorStream::ErrorStream(Pipe pipe, OnLine on_line)
    : reading_(std::move(pipe.reading)), writing_(std::move(pipe.writing)), on_line_(std::move(on_line)) {
    ::fcntl(reading_.get(), F_SETFL, O_NONBLOCK);
}

void ErrorStream::listen(int other, std::chrono::milliseconds time) {
    std::array<pollfd, 2> wanted{pollfd{ended_ ? -1 : reading_.get(), POLLIN, 0}, pollfd{other, POLLIN, 0}};
    if (::poll(wanted.data(), wanted.size(), static_cast<int>(time.count())) > 0 && wanted[0].revents != 0) read_some();
}

void ErrorStream::finish() {
    for (int i = 0; i < kMostPieces && read_some(); ++i) {
    }
    if (!line_.empty()) end_line();
}

bool ErrorStream::read_some() {
    std::array<char, kPiece> piece;
    const ssize_t got = read_block(reading_.get(), piece.data(), piece.size());
    if (got > 0) take({piece.data(), static_cast<std::size_t>(got)});
    ended_ = got == 0 || (got < 0 && errno != EAGAIN);
    return got > 0;
}

void ErrorStream::take(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t room = kLongestLine - line_.size();
        const std::size_t end = std::min({bytes.find('\n'), room, bytes.size()});
        line_.append(bytes.substr(0, end));
        const bool breaks = end < bytes.size() && bytes[end] == '\n';
        bytes.remove_prefix(end + (breaks ? 1 : 0));
        if (breaks || line_.size() == kLongestLine) end_line();
    }
}

void ErrorStream::end_line() {
    const std::string_view text = std::string_view(line_).substr(0, line_.find_last_not_of(kBlanks) + 1);
    if (!text.empty()) {
        on_line_(text);
        last_ = trimmed(text);
    }
    line_.clear();
}

}  // namespace vel::command
