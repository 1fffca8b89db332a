// Owners of what the C interface hands over: malloc'ed texts and file descriptors.
#ifndef VEL_FRAME_OWNED_H
#define VEL_FRAME_OWNED_H

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace vel {

struct Freed {
    void operator()(void* memory) const { std::free(memory); }
};

// A malloc'ed object; release() hands it to the caller of an exported function.
template <class T>
using COwned = std::unique_ptr<T, Freed>;

// A zero-filled record on the C heap.
template <class T>
COwned<T> make_zeroed() {
    COwned<T> record(static_cast<T*>(std::calloc(1, sizeof(T))));
    if (!record) throw std::bad_alloc();
    return record;
}

// A NUL-terminated copy on the C heap.
inline COwned<char> copy_text(std::string_view text) {
    COwned<char> copy(static_cast<char*>(std::malloc(text.size() + 1)));
    if (!copy) throw std::bad_alloc();
    if (!text.empty()) std::memcpy(copy.get(), text.data(), text.size());
    copy.get()[text.size()] = '\0';
    return copy;
}

// Replaces a text that a record owns.
inline void assign_text(char*& field, COwned<char> text) {
    std::free(field);
    field = text.release();
}

inline void clear_text(char*& field) { assign_text(field, nullptr); }

// A file descriptor that is closed in the end.
class Descriptor {
  public:
    explicit Descriptor(int fd = -1) : fd_(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Descriptor() {
        if (fd_ != -1) ::close(fd_);
    }
    int get() const { return fd_; }
    int release() { return std::exchange(fd_, -1); }
    explicit operator bool() const { return fd_ != -1; }

  private:
    int fd_;
};

}  // namespace vel

#endif
