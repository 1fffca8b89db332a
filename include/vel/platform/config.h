/* The settings that libvel reads. A gateway may put a library of its own behind the two profile
   calls.

   The file: a bare name is looked for in the directory $OSTRA_CONFIG_DIR (which a set-user-ID
   program ignores), else in /etc/ostra; a name with a slash is a path. Sections stand in square
   brackets and ignore case; keys are compared exactly; the first match wins. Blanks around names and
   values are dropped, and one pair of double quotes around a value too. A line that begins with ";"
   or "#" is a comment; nothing behind a value is. LF and CR LF both end a line, of any length. A
   UTF-8 byte order mark is passed over. A "[" without its "]" opens a section that nothing finds. A
   file that is missing, not a regular file, unreadable or larger than 4 MiB holds no settings. */
#ifndef VEL_PLATFORM_CONFIG_H
#define VEL_PLATFORM_CONFIG_H

#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Reads a setting as text.
     section, key  null gives the fallback
     fallback      the text for a key that is not there; null counts as empty. A key that is present
                   and empty gives the empty text.
     buffer        receives at most size - 1 bytes and a NUL; null or a size below 1 gives 0 and
                   writes nothing
     file          null gives the fallback
   Returns the number of bytes stored, the NUL not counted. A file changed, replaced or removed
   since the last call is read again, always; where its path has come to lead elsewhere without that (a
   directory was renamed, a symbolic link changed), within 10 ms. Until then a read costs little more than
   one fstat, on a descriptor that is held for each of the last 8 files. Keeps errno. Any thread. */
VEL_API int GetPrivateProfileString(const char* section, const char* key, const char* fallback, char* buffer, int size,
                                    const char* file);

/* Stores a setting: replaces the value that a read finds, or adds the key behind the last setting of
   its section, or adds the section at the file's end; every other byte of the file stays. The file
   is replaced atomically and on disk when the call returns, keeps its mode, and is made when it is
   missing. Writers wait for one another on a lock file beside it (its name and ".lock"), which stays.
     value  null removes the key, wherever it stands in the section. A value that would lose blanks
            or quotes is written in quotes.
   Returns 1, also when nothing had to change; 0 for a null or empty section, key or file, a line
   break in a name or value, a name that a read would not find again (blanks around it; a key with
   "=" in it or "[", ";" or "#" before it; a section with "]" in it), a file that grows past 4 MiB,
   or one that cannot be read or written. Any thread. */
VEL_API int WritePrivateProfileString(const char* section, const char* key, const char* value, const char* file);

/* The following two are the local library's own. libvel does not call them. */

/* Lays a setting over all files, for the calling thread alone: its reads give this value until it
   is taken away or the thread ends; writes go to the file as ever. Section and key are compared as
   in a file; the value is taken as it is.
     value  null takes the overlaid value away again
   Returns 1; 0 for a null section or key, or when memory runs out. Any thread. */
VEL_API int ProfileOverlaySet(const char* section, const char* key, const char* value);

/* Takes all of the calling thread's overlaid settings away. */
VEL_API void ProfileOverlayClear(void);

#ifdef __cplusplus
}
#endif

#endif
