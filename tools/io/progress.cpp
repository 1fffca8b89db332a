#include "tools/io/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

namespace vel::command {
namespace {

constexpr std::chrono::milliseconds kPatience{500};  // what ends sooner needs no progress
constexpr std::chrono::milliseconds kBetween{250};
constexpr std::size_t kUsualWidth = 80;
constexpr uint64_t kMebibyte = 1 << 20;

std::size_t terminal_width() {
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualWidth;
}

std::string time_left(double seconds) {
    constexpr double kMinute = 60, kHour = 3600, kLongest = 1000 * kHour;
    const auto in = [&](double unit, const char* name) {
        return std::to_string(static_cast<long>(std::ceil(seconds / unit))) + name;
    };
    if (seconds > kLongest) return "very long";
    return seconds < 2 * kMinute ? in(1, " s") : seconds < 2 * kHour ? in(kMinute, " min") : in(kHour, " h");
}

}  // namespace

std::string progress_text(Progress::Unit unit, uint64_t done, uint64_t total, double spent) {
    const bool bytes = unit == Progress::Unit::bytes;
    const auto count = [&](uint64_t number) { return std::to_string(bytes ? number / kMebibyte : number); };
    std::string text = count(done);
    if (total > 0) text.append(" of ").append(count(total));
    text += bytes ? " MiB" : " files";
    if (done == 0 || done >= total) return text;
    return text + ", " + time_left(spent * static_cast<double>(total - done) / static_cast<double>(done)) + " left";
}

Progress::Progress(Streams& streams, Unit unit, uint64_t total)
    : streams_(streams),
      unit_(unit),
      total_(total),
      draws_((unit == Unit::bytes || total > 1) && streams.take_status_line()),
      next_(start_ + kPatience) {}

Progress::~Progress() {
    if (!draws_) return;
    streams_.draw({});
    streams_.give_back_status_line();
}

void Progress::tick() {
    if (!draws_) return;
    const Clock::time_point now = Clock::now();
    const std::unique_lock held(mutex_, std::try_to_lock);  // one drawer is enough
    if (!held || now < next_) return;
    next_ = now + kBetween;
    streams_.draw(line(now - start_));
}

// Cut by one more column than the terminal has: in the last one some break the line.
std::string Progress::line(Clock::duration spent) const {
    const double seconds = std::chrono::duration<double>(spent).count();
    const std::string text = "vel: " + progress_text(unit_, done_, total_, seconds);
    return text.substr(0, terminal_width() - 1);
}

}  // namespace vel::command
