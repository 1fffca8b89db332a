#include "tools/io/exit_code.h"

#include <cerrno>
#include <system_error>

namespace vel::command {

Failure Failure::of_system_call(Exit exit, const std::string& what) {
    const std::string reason = std::generic_category().message(errno);
    return {exit, what.empty() ? reason : what + ": " + reason};
}

}  // namespace vel::command
