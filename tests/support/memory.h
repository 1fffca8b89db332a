// Memory that runs out, in programs that link memory.cpp.
#ifndef VEL_TESTS_SUPPORT_MEMORY_H
#define VEL_TESTS_SUPPORT_MEMORY_H

#include <cstddef>
#include <utility>

namespace vel::test {

constexpr std::size_t kEveryRequest = static_cast<std::size_t>(-1);

// What the calling thread's requests for memory get.
struct Memory {
    std::size_t granted = kEveryRequest;  // so many of the next ones succeed
    std::size_t refused = 0;              // so many behind them fail
    bool has_failed = false;              // one has done so
};
inline thread_local Memory memory;

// While it lives, requests fail behind the first ones: all of them, or so many.
class Starved {
  public:
    explicit Starved(std::size_t granted = 0, std::size_t refused = kEveryRequest) {
        memory = {granted, refused, false};
    }
    Starved(const Starved&) = delete;
    Starved& operator=(const Starved&) = delete;
    ~Starved() { memory.granted = kEveryRequest; }
};

// While it lives, there is memory again: for what a test does itself meanwhile.
class PlentyOfMemory {
  public:
    PlentyOfMemory() = default;
    PlentyOfMemory(const PlentyOfMemory&) = delete;
    PlentyOfMemory& operator=(const PlentyOfMemory&) = delete;
    ~PlentyOfMemory() { memory = before_; }

  private:
    Memory before_ = std::exchange(memory, {});
};

}  // namespace vel::test

#endif
