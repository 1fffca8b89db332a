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
     text         one message of any length; null counts as empty. A final line end is dropped and
                  other control characters are escaped, so that no text can forge a line.
   The local library writes
     2025-03-30T01:59:59.123+01:00 4711 1 smtpgate ParseMimeMessage: out of memory.
   with one blank between the fields (an empty application is a "-", its blanks are escaped), a line
   feed as "\n", other control characters as "\xHH" and a backslash as "\\". It takes its settings
   from section [Log] of "ostra.ini", read afresh for each line:
     Target   "stderr" (the default), "syslog" (facility mail; the daemon may cut long lines), or the
              path of a file, which is appended to, made with mode 0640 when it is missing, and
              opened anew when it has been rotated. A line that the file does not take goes to
              standard error.
     Levels   "all" (the default) or a list of level numbers such as "1,3"; without any number it
              means all
   Any thread. */
VEL_API void LogMessage(int level, const char* application, const char* text);

/* The following three are the local library's own. libvel does not call them. */

/* Receives one log line. The texts live until the sink returns. A sink must not throw or log. */
typedef void (*LogCaptureSink)(void* context, int level, const char* application, const char* text);

/* Sends the calling thread's log lines to a sink instead of the log, whatever their level, until
   LogCaptureStop; the texts are as they were given. A second start replaces the first.
     sink     not null
     context  handed to the sink as it is
   Returns 1; 0 for a null sink, which changes nothing. */
VEL_API int LogCaptureStart(LogCaptureSink sink, void* context);

/* The same, but the lines are written to the log as well, before the sink receives them. */
VEL_API int LogWatchStart(LogCaptureSink sink, void* context);

/* Ends the calling thread's capture or watch; nothing when there is none. */
VEL_API void LogCaptureStop(void);

#ifdef __cplusplus
}
#endif

#endif
