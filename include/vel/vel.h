/* libvel: Internet-mail services for the programs of a mail gateway.

   Conventions. They hold for every call; an entry states only what differs.

    1. Start. Call InitVELDll or InitVELDll_NOMQ once, from one thread, before any other call, and
       TerminateVELDll after the last one. Everything else may be called from any thread, one
       thread at a time for each open file.
    2. Results. 1 (or a count, or a descriptor) is success, 0 is "nothing there" or end of input,
       -1 is failure. Parsers return 0 or a count, and -1. Calls that make a text or a file return
       it, or null.
    3. Memory. A text or path that a call returns is malloc'ed, and the caller frees it. A record is
       released by the call that its entry names. Accessors return the record's own texts, which
       nobody else frees.
    4. Lines. A line handed out by the line reader lives in the file's own buffer until the next
       call on that file. A writer writes what it is given and adds no line end.
    5. Positions and sizes are 32 bits. A file of 2 GiB or more is refused when it is opened, with
       EFBIG; a position never wraps.
    6. Text is bytes. Letter case and white space are those of ASCII, whatever the locale says.
    7. Log. Failures go to LogMessage with the caller's module name, at level 1 for errors, 3 for
       accounting, 6 for notices. errno is what the failing system call left.
    8. Settings come from "ostra.ini" and are read afresh at each call, unless an entry says that
       start-up keeps them.
    9. Locks are taken in this order, each only while its entry runs: the header parser's, the
       address parser's; the file pool's locks last.
   10. No C++ exception leaves the library: memory that runs out is a failure like any other.
   11. The headers are C11 and C++17. C does not see what only C++ can say. */
#ifndef VEL_VEL_H
#define VEL_VEL_H

#include "vel/binhex.h"
#include "vel/build.h"
#include "vel/codec.h"
#include "vel/envelope.h"
#include "vel/frame.h"
#include "vel/japanese.h"
#include "vel/magic.h"
#include "vel/mime.h"
#include "vel/notify.h"
#include "vel/rfc822.h"
#include "vel/types.h"
#include "vel/words.h"

#endif
