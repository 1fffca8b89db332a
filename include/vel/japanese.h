/* Japanese text: Shift-JIS, in which files are kept, and JIS (ISO-2022-JP, RFC 1468), in which mail carries
   it.

   The converters allocate nothing for each line or byte, log nothing of their own, and hold no more than a
   few blocks, however long a line is. They compute characters and look none up, so that a pair that stands
   for nothing becomes another one that stands for nothing. Any thread. */
#ifndef VEL_JAPANESE_H
#define VEL_JAPANESE_H

#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Characters ------------------------------------------------------------------------------ */

/* Converts one double-byte character in its place. Null for a byte does nothing. */
VEL_API void sjis2jis(uint8_t* first, uint8_t* second);
VEL_API void jis2sjis(uint8_t* first, uint8_t* second);

/* Makes a half-width katakana the full-width character of Shift-JIS, with the sound mark behind it.
     in      where the byte behind the katakana was read; any descriptor. It is moved back by one byte when
             that byte is no part of the character
     next    the byte behind the katakana; 0 at the end of the text
     first   the katakana, 0xA1 to 0xDF; receives the character's first byte. Any other byte, and null, do
             nothing
     second  receives the second byte */
VEL_API void half2full(int in, uint8_t next, uint8_t* first, uint8_t* second);

/* ---- From descriptor to descriptor ----------------------------------------------------------- */

/* Converts everything from the input's offset to its end. Half-width katakana become full-width. Any
   descriptors will do; what a line reader or writer holds in a buffer for them is not looked at.
     mark  what is written for a byte above 127 that is no part of a character; null or empty writes the
           byte. The last byte is written as it stands
   Returns 0, or -1 when a read or write fails; the output stays as far as it came. */
VEL_API int ShiftJIS2JIS(int in, int out, const char* mark);

/* Converts lines. Each ends at CR, which is written CR LF, or at LF. Double-byte text goes on from line to
   line.
     in      goes by lines: a handle of fileopen or CreateFile, read from its line position on
     count   bytes to produce: no other line is begun once they are reached; 0 or less does nothing and
             succeeds. A file's size converts all of it, unless its line ends grow
     repair  1: "$B" or "$@" without ESC begins double-byte text too when a closer, with or without ESC, follows
             on the same line within 32 KiB and before any other escape sequence. When the line or the 32 KiB
             end first, the rest of the line stays as it is and ends in CR LF
   Returns 0; -1 for a handle that is not open, and when a read (the line reader logs it) or write fails; the
   output stays as far as it came. */
VEL_API int JIS2ShiftJIS(int in, int32_t count, int out, int repair);

/* ---- Texts ----------------------------------------------------------------------------------- */

/* Convert a text by way of two temporary files, which are gone afterwards: ShiftJIS2JIS without a mark;
   JIS2ShiftJIS with repair when [Options] RepairDamagedJISinHeaders is YES, the default.
   bufJIS2ShiftJIS converts only when [Gateway] LocalCharSet is ISO-2022-JP and [Options] DisableJISinHeaders
   (default NO) is not YES; bufJIS2ShiftJIS_wmc always does.
   Returns the new text; null for null, when nothing comes out or nothing is to be converted, and when a file
   cannot be made, written or read. */
VEL_API char* bufShiftJIS2JIS(const char* text);
VEL_API char* bufJIS2ShiftJIS(const char* text);
VEL_API char* bufJIS2ShiftJIS_wmc(const char* text);

/* Removes every control character, 0 to 31 and 127, in place. Returns the text; null for null. */
VEL_API char* EliminateCntrlChars(char* text);

/* ---- Files ----------------------------------------------------------------------------------- */

/* Converts a file from JIS to Shift-JIS in its place, unless [Options] ScanForJIS is NO. That is the default
   when [Gateway] LocalCharSet is not ISO-2022-JP. Repairs when [Options] RepairDamagedJIS is YES, the default.
   The new file is made under a temporary name, gets the path in one step when all of it is on the disk, and
   has the mode of a new file.
   Returns 0 when the file was converted or nothing was to be done. Otherwise -1 with the file as it was, and at
   level 1 "out of memory", "filecreate failed.", "fileopen failed.", "JIS2ShiftJIS conversion failed." or
   "rename failed." */
VEL_API int CheckJapanese(const char* path);

#ifdef __cplusplus
}
#endif

#endif
