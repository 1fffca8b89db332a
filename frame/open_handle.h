// A handle of the descriptor calls that is closed in the end.
#ifndef VEL_FRAME_OPEN_HANDLE_H
#define VEL_FRAME_OPEN_HANDLE_H

#include "vel/frame.h"

namespace vel {

class OpenHandle {
  public:
    explicit OpenHandle(int handle) : handle_(handle) {}
    OpenHandle(const OpenHandle&) = delete;
    OpenHandle& operator=(const OpenHandle&) = delete;
    ~OpenHandle() {
        if (handle_ != -1) fileclose(handle_);
    }
    int get() const { return handle_; }
    explicit operator bool() const { return handle_ != -1; }

  private:
    int handle_;
};

}  // namespace vel

#endif
