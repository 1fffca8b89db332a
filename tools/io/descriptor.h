// A file descriptor that is closed in the end, and the system calls on it, repeated when a signal
// interrupts them.
#ifndef VEL_TOOLS_IO_DESCRIPTOR_H
#define VEL_TOOLS_IO_DESCRIPTOR_H

#include <sys/types.h>
#include <unistd.h>

#include <cstddef>
#include <string_view>
#include <utility>

namespace vel::command {

class Descriptor {
  public:
    explicit Descriptor(int fd = -1) : fd_(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor() {
        if (fd_ != -1) ::close(fd_);
    }
    int get() const { return fd_; }
    int release() { return std::exchange(fd_, -1); }
    explicit operator bool() const { return fd_ != -1; }

  private:
    int fd_;
};

constexpr std::size_t kBlock = 65536;  // what one read takes: memory stays bounded, calls stay few

ssize_t read_block(int fd, char* buffer, std::size_t size);

// False when not everything could be written; errno says why.
bool write_all(int fd, std::string_view bytes);

}  // namespace vel::command

#endif
