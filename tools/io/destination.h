// The directory that extracted files go to.
#ifndef VEL_TOOLS_IO_DESTINATION_H
#define VEL_TOOLS_IO_DESTINATION_H

#include <sys/types.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <unordered_map>

#include "tools/io/scratch.h"

namespace vel::command {

// Of one run.
struct Limits {
    uint64_t bytes = std::numeric_limits<uint64_t>::max();
    uint64_t files = std::numeric_limits<uint64_t>::max();
};

class Destination {
  public:
    // A directory that is missing is made when a file is first prepared for it. Throws Failure for one that
    // can be told to be impossible now.
    Destination(const std::string& directory, const Limits& limits, Scratch& scratch);

    // Where files are prepared, below the directory, so that a finished one is moved into place: there is
    // never half of one. Any thread.
    Scratch& scratch() { return scratch_; }

    const Limits& limits() const { return limits_; }

    // The rest is for who has the turn.

    // Whether the limits leave room for another file of a size.
    bool has_room(uint64_t size) const { return left_.files > 0 && size <= left_.bytes; }

    // Moves a file that was prepared into the directory under a safe name; a number is added when the name is
    // taken, nothing is ever overwritten. Returns the path. Throws Failure.
    std::string place(const std::string& name, const char* file, uint64_t size);

  private:
    std::string next_path(const std::string& name);

    std::string directory_;
    const Limits limits_;
    Limits left_;  // of the limits
    Scratch& scratch_;
    mode_t mode_;                                             // of new files, as the umask has it
    std::unordered_map<std::string, unsigned> last_numbers_;  // given to each name so far
};

}  // namespace vel::command

#endif
