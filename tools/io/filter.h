// Another program between two files.
#ifndef VEL_TOOLS_IO_FILTER_H
#define VEL_TOOLS_IO_FILTER_H

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/io/scratch.h"

namespace vel::command {

struct FilterLimits {
    std::chrono::milliseconds time{10000};
    uint64_t bytes = uint64_t{64} << 20;  // of what it writes
};

// Has a program, by its path, read a file as its standard input; what it writes to standard output becomes a
// new file. No shell is between. It gets no terminal, no descriptor and no environment of ours but a path, has its
// home in the private directory, and no network where the system lets us take it away; it is killed at a limit
// and with this process. Throws Failure when it cannot be run, reaches a limit or ends with a code other than 0.
PrivateFile filtered(const std::string& file, const std::string& program, const std::vector<std::string>& arguments,
                     Scratch& scratch, const FilterLimits& limits = {});

}  // namespace vel::command

#endif
