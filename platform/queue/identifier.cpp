#include "platform/queue/identifier.h"

#include <sys/random.h>
#include <time.h>

#include <algorithm>
#include <cerrno>

#include "platform/queue/report.h"

namespace vel {
namespace {

constexpr std::string_view kDigits = "0123456789abcdefghijklmnopqrstuv";
constexpr unsigned kBitsOfDigit = 5;
constexpr std::size_t kTimeDigits = 11;  // 55 bits of microseconds: past the year 3000
constexpr std::size_t kRandomDigits = 13;
static_assert(kDigits.size() == 1U << kBitsOfDigit && kRandomDigits * kBitsOfDigit >= 64);
static_assert(kTimeDigits + kRandomDigits == kIdentifierSize);

uint64_t random_bits() {
    uint64_t bits = 0;
    ssize_t got;
    do {
        got = ::getrandom(&bits, sizeof bits, 0);
    } while (got < 0 && errno == EINTR);
    if (got != sizeof bits) throw QueueError("the system gives no random numbers");
    return bits;
}

void append_digits(std::string& text, uint64_t value, std::size_t count) {
    const std::size_t begin = text.size();
    text.resize(begin + count);
    for (std::size_t at = begin + count; at-- > begin; value >>= kBitsOfDigit)
        text[at] = kDigits[value % kDigits.size()];
}

int64_t read_clock(clockid_t clock) {
    timespec time;
    ::clock_gettime(clock, &time);
    return int64_t{time.tv_sec} * 1'000'000 + time.tv_nsec / 1000;
}

}  // namespace

int64_t now() { return read_clock(CLOCK_REALTIME); }

int64_t uptime() { return read_clock(CLOCK_BOOTTIME); }

std::string new_identifier() {
    std::string text;
    append_digits(text, static_cast<uint64_t>(now()), kTimeDigits);
    append_digits(text, random_bits(), kRandomDigits);
    return text;
}

bool is_identifier(std::string_view text) {
    return text.size() == kIdentifierSize && text.find_first_not_of(kDigits) == text.npos;
}

unsigned shard_of(std::string_view identifier, unsigned shards) {
    unsigned value = 0;
    for (const char digit : identifier.substr(identifier.size() - 2)) {
        value = value << kBitsOfDigit | static_cast<unsigned>(kDigits.find(digit));
    }
    return value % shards;
}

}  // namespace vel
