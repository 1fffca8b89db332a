// Why a call of a local library failed, in words for the log.
#ifndef VEL_PLATFORM_FAILURE_H
#define VEL_PLATFORM_FAILURE_H

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>

namespace vel {

class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;

    // A system call failed: what was tried, on which file, and the system's reason.
    static Failure of_system(const std::string& tried, const std::string& path) {
        return Failure(tried + " " + path + ": " + std::generic_category().message(errno));
    }
};

// A database's file is not one, or is damaged.
class DamagedError : public Failure {
  public:
    using Failure::Failure;
};

// A COMMIT failed: what it was to write may be there or come to life by a crash.
class CommitError : public Failure {
  public:
    using Failure::Failure;
};

}  // namespace vel

#endif
