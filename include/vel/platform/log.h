/* The log that libvel writes to. A gateway may put a library of its own behind this name.

   Contract of LogMessage: it may be called from any thread, before start-up and after shut-down;
   the text is data, never a format; it keeps errno and never calls libvel back. */
#ifndef VEL_PLATFORM_LOG_H
#define VEL_PLATFORM_LOG_H

#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Writes one record: time, process, level, application, text.
     level        1 errors and traces, 3 accounting, 6 notices
     application  the module that speaks; null counts as empty
     text         one message; null counts as empty. A final line end is dropped and other control
                  characters are escaped, so that no text can forge a line.
   The local library takes its settings from section [Log] of "ostra.ini":
     Target   "stderr" (the default), "syslog" (facility mail), or the path of a file, which is
              appended to and opened anew when it has been rotated
     Levels   "all" (the default) or a list of level numbers such as "1,3" */
VEL_API void LogMessage(int level, const char* application, const char* text);

/* The following two are the local library's own. libvel does not call them. */

/* Receives one log line. The texts live until the sink returns. A sink must not throw. */
typedef void (*LogCaptureSink)(void* context, int level, const char* application, const char* text);

/* Sends the calling thread's log lines to a sink instead of the log, whatever their level, until
   LogCaptureStop. A second start replaces the first.
     sink     not null
     context  handed to the sink as it is
   Returns 1; 0 for a null sink, which changes nothing. */
VEL_API int LogCaptureStart(LogCaptureSink sink, void* context);

/* Ends the calling thread's capture; nothing when there is none. */
VEL_API void LogCaptureStop(void);

#ifdef __cplusplus
}
#endif

#endif
