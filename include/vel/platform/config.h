/* The settings that libvel reads. A gateway may put a library of its own behind the two profile
   calls.

   The file: a bare name is looked for in the directory $OSTRA_CONFIG_DIR, else in /etc/ostra; a
   name with a slash is a path. Sections stand in square brackets and ignore case; keys are compared
   exactly; the first match wins. Blanks around names and values are dropped, and one pair of
   double quotes around a value too. A line that begins with ";" or "#" is a comment; nothing behind
   a value is. LF and CR LF both end a line, of any length. */
#ifndef VEL_PLATFORM_CONFIG_H
#define VEL_PLATFORM_CONFIG_H

#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Reads a setting as text.
     fallback  the text for a key that is not there; null counts as empty. A key that is present and
               empty gives the empty text.
     buffer    receives at most size - 1 bytes and a NUL; null or a size below 1 gives 0 and
               writes nothing
     file      null gives the fallback
   Returns the number of bytes stored, the NUL not counted. A file changed since the last call is
   read again, always. Any thread. */
VEL_API int GetPrivateProfileString(const char* section, const char* key, const char* fallback, char* buffer, int size,
                                    const char* file);

/* Stores a setting: replaces the key's value, or adds the key at its section's end, or adds the
   section at the file's end; every other line keeps its bytes. The file is replaced atomically,
   under a lock that other processes respect, and made when it is missing.
     value  null removes the key
   Returns 1; 0 for a null or empty section, key or file, a line break in a name or value, a name
   that could not be read back, or a file that cannot be written. Any thread. */
VEL_API int WritePrivateProfileString(const char* section, const char* key, const char* value, const char* file);

/* The following two are the local library's own. libvel does not call them. */

/* Lays a setting over all files, for the calling thread alone: reads give this value until it is
   cleared. Section and key are compared as in a file.
     value  null takes the overlaid value away again
   Returns 1; 0 for a null section or key, or when memory runs out. */
VEL_API int ProfileOverlaySet(const char* section, const char* key, const char* value);

/* Takes all of the calling thread's overlaid settings away. */
VEL_API void ProfileOverlayClear(void);

#ifdef __cplusplus
}
#endif

#endif
