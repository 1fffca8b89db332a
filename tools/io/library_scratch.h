// Where the library makes its temporary files.
#ifndef VEL_TOOLS_IO_LIBRARY_SCRATCH_H
#define VEL_TOOLS_IO_LIBRARY_SCRATCH_H

#include <cerrno>

#include "tools/io/exit_code.h"
#include "tools/io/journal.h"
#include "tools/io/scratch.h"

namespace vel::command {

// While this lives, what the library writes for the calling thread goes to a private directory, which is made
// now, if need be. Throws Failure.
class LibraryScratch {
  public:
    explicit LibraryScratch(Scratch& scratch)
        : directory_(scratch.directory()), in_force_("Gateway", "TemporaryDirectory", directory_.c_str()) {
        errno = 0;
    }

    // Of a call that could not write. The library hands out no reason, but errno mostly tells.
    Failure failure() const {
        if (errno != 0) return Failure::of_system_call(Exit::io_error, directory_);
        return {Exit::io_error, directory_ + ": a body cannot be written there"};
    }

  private:
    const std::string& directory_;
    const SettingInForce in_force_;
};

}  // namespace vel::command

#endif
