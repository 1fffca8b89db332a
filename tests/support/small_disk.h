// A disk that is full, byte for byte.
#ifndef VEL_TESTS_SUPPORT_SMALL_DISK_H
#define VEL_TESTS_SUPPORT_SMALL_DISK_H

#include <sys/resource.h>

#include <csignal>
#include <cstddef>

namespace vel::test {

constexpr std::size_t kEndless = static_cast<std::size_t>(-1);

// While it lives, files end at so many bytes. The counter of temporary names takes four.
class SmallDisk {
  public:
    explicit SmallDisk(std::size_t bytes) : bytes_(bytes) {
        if (bytes_ == kEndless) return;
        ::getrlimit(RLIMIT_FSIZE, &before_);
        handler_ = ::signal(SIGXFSZ, SIG_IGN);
        const rlimit small{bytes_, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk() {
        if (bytes_ == kEndless) return;
        ::setrlimit(RLIMIT_FSIZE, &before_);
        ::signal(SIGXFSZ, handler_);
    }

  private:
    std::size_t bytes_;
    rlimit before_{};
    void (*handler_)(int) = SIG_DFL;
};

}  // namespace vel::test

#endif
