#include "tools/io/turns.h"

#include <utility>

namespace vel::command {
namespace {

// So much may be written ahead of the turn: one slow file keeps other threads busy for a while, and memory
// stays bounded.
constexpr std::size_t kBytesAhead = std::size_t{16} << 20;
constexpr std::size_t kFilesAhead = 10000;

}  // namespace

void Turns::await(std::size_t place) {
    if (has(place)) return;
    std::unique_lock held(mutex_);
    changed_.wait(held, [&] { return has(place) || stopped_; });
    if (stopped_) throw Stopped{};
}

void Turns::finish(std::size_t place, Pieces pieces) {
    if (leave(place, pieces)) return;
    do streams_.write(pieces);
    while (pass_on(pieces));
}

// False when the turn has come.
bool Turns::leave(std::size_t place, Pieces& pieces) {
    std::unique_lock held(mutex_);
    changed_.wait(held,
                  [&] { return has(place) || stopped_ || (left_size_ < kBytesAhead && left_.size() < kFilesAhead); });
    if (stopped_) throw Stopped{};
    if (has(place)) return false;
    left_size_ += pieces.size();
    left_.emplace(place, std::move(pieces));
    return true;
}

// Gives the turn to the next place. True when that one is finished already: it is written with the same turn.
bool Turns::pass_on(Pieces& next) {
    const std::lock_guard held(mutex_);
    ++current_;
    changed_.notify_all();
    const auto found = left_.find(current_);
    if (found == left_.end()) return false;
    next = std::move(found->second);
    left_.erase(found);
    left_size_ -= next.size();
    return true;
}

void Turns::stop() {
    const std::lock_guard held(mutex_);
    stopped_ = true;
    changed_.notify_all();
}

}  // namespace vel::command
