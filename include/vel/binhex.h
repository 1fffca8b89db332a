/* Macintosh files: BinHex 4.0 text (RFC 1741) and AppleSingle files (RFC 1740), from one to the other.

   Both calls write a new file into the temporary directory, its name beginning with "binhex". A call that
   fails leaves no file and sets what it would have returned to null. They may run in any number of
   threads on different files, and hold little of a file in memory, whatever lengths it states. */
#ifndef VEL_BINHEX_H
#define VEL_BINHEX_H

#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Encodes an AppleSingle file as BinHex text, with CR LF line ends. Both forks, the name (cut to 63 bytes),
   type and creator are taken over, and flags of 0. The entries may stand in any order, as long as their
   descriptors lie in the first 8192 bytes; others are skipped, and those that are missing are empty. Magic
   and version are not looked at.
     sourcePath  the AppleSingle file
     outputPath  receives the new file's path, which the caller frees; null fails
   Returns 0; -1 when the source cannot be opened (the file layer logs it) or read, when its descriptors or a
   known entry pass its end, and when the output cannot be written. */
VEL_API int ConvertASToBinHex(const char* sourcePath, char** outputPath);

/* Finds BinHex text in a stretch of the input and decodes it to an AppleSingle file with the entries data
   fork, resource fork, real name and Finder information (type, creator, flags, zeros). The text begins at the
   first ":" behind "(This file must be converted with BinHex ", in just these letters; the version does not
   count. CR, LF, blanks and tabs are skipped. What follows the last CRC is not looked at, and the closing ":"
   may be missing.
     in          any descriptor that can be read, a pipe too, from its offset on
     count       bytes to read, at most; 0 or less gives -1
     outputPath  receives the new file's path, which the caller frees; null fails
     macName     receives the name in the text, perhaps empty, which the caller frees: data from outside, with
                 any characters in it, and cut at a NUL; or null
   Where in the stretch the input stands afterwards is not fixed.
   Returns 0; -1 when there is no such text or it ends early, when a CRC differs, when the name is longer than
   63 bytes or the forks do not fit into a file below 2 GiB, and when the output cannot be written; -2 for
   another character than those of BinHex before the last CRC.
   Logs "CloseHandle failed for %.256s" at level 1 when the new file cannot be closed. */
VEL_API int ConvertBinHexToAS(int in, long count, char** outputPath, char** macName);

#ifdef __cplusplus
}
#endif

#endif
