// What the work on one file stands on.
#ifndef VEL_TOOLS_IO_SESSION_H
#define VEL_TOOLS_IO_SESSION_H

#include "tools/io/journal.h"
#include "tools/io/output.h"
#include "tools/io/scratch.h"

namespace vel::command {

// Never shared between threads. The scratch directory is one and the same for all of them; the journal is
// the thread's, the output that of the file.
struct Session {
    Scratch& scratch;
    Journal& journal;
    Output& output;
};

}  // namespace vel::command

#endif
