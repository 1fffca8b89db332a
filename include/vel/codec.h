/* Transfer encodings: base64, quoted-printable, uuencode.

   The calls go from handle to handle: they read at the input descriptor's offset and write to the
   output's, and what the line reader or writer holds in a buffer for them is not looked at. Any
   descriptor will do, pooled or not, unless an entry says that it goes by lines: such a handle must come
   from fileopen, filecreate or CreateFile, and its buffer counts.
   They log nothing of their own, allocate nothing for each byte or line, and may run in any number of
   threads on different files. A call that fails leaves the output as far as it came. */
#ifndef VEL_CODEC_H
#define VEL_CODEC_H

#include "vel/frame.h"
#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Base64 (RFC 2045 section 6.8) ----------------------------------------------------------- */

/* Encodes everything from the input's offset to its end, in lines of 72 characters. A full last line
   is followed by an empty one; no input gives one empty line.
   Returns 0, or -1 when a read or write fails. */
VEL_API int to64(int in, int out);

/* Decodes a stretch of the input. "=", "-" and NUL end the text, white space is skipped; a last quantum
   that is cut short yields the bytes that it holds.
     count  characters to take, at most; 0 or less does nothing and succeeds
   The input stands where blocks of 256 bytes, as many as were begun, put it; a pipe is read by such
   blocks.
   Returns 1; -1 for any other character outside the alphabet, for an input that ends or fails before
   the count and before the text has ended, and when a write fails. */
VEL_API int from64(int in, int32_t count, int out);

/* ---- Quoted-printable (RFC 2045 section 6.7) ------------------------------------------------- */

/* Encodes text from the input's offset to the end of the file, which must be one that has a size. CR LF
   and tabs stay, a blank or tab before CR LF is followed by a soft break, "." at the beginning of a line
   is escaped, and "From " there becomes "=46rom ", but not on the first line. LF alone becomes "=0A", CR
   alone "=0D", or nothing at the end. A line break that the text does not have is added to its end.
   Returns 1; -1 when a read or write fails or the file ends before its size, and when it ends within
   or right behind "From" at the beginning of a line. */
VEL_API int textToQp(int in, int out);

/* The same on the records of open files, from where the input is read next. The output goes through the
   line writer. An end within "From" is no failure.
   Returns 1; -1 for a null file and when a read (the line reader logs it) or write fails. */
VEL_API int textToQp_v2(VEL_FILE* in, VEL_FILE* out);

/* Encodes any bytes from the input's offset to the end of the file, which must be one that has a size.
   Blanks, tabs and line ends are escaped too. The soft and hard break at the end stand for no byte.
   Returns 1, or -1 when a read or write fails or the file ends before its size. */
VEL_API int binaryToQp(int in, int out);

/* Decodes a stretch of the input. LF, with or without CR, is a line end and becomes CR LF; the last one
   is dropped. CR is dropped, "=" CR LF too. An escape that is none yields 0xFF. "=" as the last character
   yields nothing.
     count  characters to take; 0 or less does nothing and succeeds
   The input stands where blocks of 256 bytes, as many as were begun, put it; a pipe is read by such
   blocks.
   Returns 1; 0 when the input or the count ends behind "=" and one character, and when there is no place
   for an escaped byte; -1 when the input ends or fails before the count anywhere else, and when another
   write fails. */
VEL_API int fromqp(int in, int32_t count, int out);

/* ---- Uuencode -------------------------------------------------------------------------------- */

/* Tells whether a line is the begin line of a uuencoded file: "begin" in any case, a mode of decimal
   digits, a name. The line end counts as the line's end.
     line  null is no begin line
     name  256 bytes, which receive the name when it is one: all behind one blank after the mode, at most
           255 characters, perhaps none; or null
   Returns 1 or 0. */
VEL_API int IsuuencodeBegin(const char* line, char* name);

/* Encodes everything from the input's offset to its end as a uuencoded file: begin line, lines of 45
   bytes, a line of none, end line, empty line. A blank stands behind the name.
     out   goes by lines
     name  null gives "unknown.dat"
     mode  null gives "644"
   Returns 1; 0 when the begin line cannot be written; -1 when a read or another write fails. */
VEL_API int uuencode(int in, int out, const char* name, const char* mode);

/* Decodes the next uuencoded file of the input. Up to its begin line everything is skipped. A line that
   was shortened is filled up with zeros. The data are over at a line of no bytes, at an empty one (CR LF)
   and at the end line, "end" with nothing but blanks behind it; a line of "end" and other text is data, and no
   end line counts from there on.
     in     goes by lines, from its line position on
     limit  bytes to read, line ends included; the line that passes it is still decoded when the begin
            line stands before it; 0 is no limit, below 0 does nothing
     name   receives the begin line's name, which the caller frees, unless it is empty or there is no
            begin line; or null
   Returns 1 when an end line closed the data, 0 otherwise; what was decoded stays. */
VEL_API int uudecode(int in, int32_t limit, int out, char** name);

#ifdef __cplusplus
}
#endif

#endif
