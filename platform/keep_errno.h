// Leaves errno as the caller had it: a log line or a setting that is read must not hide the reason
// of a failure.
#ifndef VEL_PLATFORM_KEEP_ERRNO_H
#define VEL_PLATFORM_KEEP_ERRNO_H

#include <cerrno>

namespace vel {

class KeepErrno {
  public:
    KeepErrno() = default;
    KeepErrno(const KeepErrno&) = delete;
    KeepErrno& operator=(const KeepErrno&) = delete;
    ~KeepErrno() { errno = saved_; }

  private:
    const int saved_ = errno;
};

}  // namespace vel

#endif
