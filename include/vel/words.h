/* Encoded words in header fields (RFC 1522; RFC 2047 after it).

   Text goes in and comes out as bytes of one charset; nothing is converted. Every result is a malloc'ed
   text that the caller frees; null for a null argument and without memory. Logs nothing. Any thread.

   Two families. One goes by the settings, read once a call:
     [Options] EnableRFC1522Encoding  NO: nothing is encoded; else, and by default, all is
     [Options] RFC1522codingMethod    Quoted-printable, the default: "Q"; else "B"
     [Gateway] LocalCharSet           the charset of all text, at most 63 characters; US-ASCII by default
     [Options] Force1522Decoding      YES: words of any charset are decoded; else, and by default, only
                                      those of the local one
   The other, named ..._wmc, reads no settings: the charset is an argument and the encoding "B".

   An encoded word that does not fit its line begins a new one, or is cut; lines are parted by CR LF and a
   blank. Columns are those of the value, the field's name not counted. */
#ifndef VEL_WORDS_H
#define VEL_WORDS_H

#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Tells whether no byte of a text is above 127. Returns 1 or 0; 1 for null. */
VEL_API int IsStringAllAscii(const char* text);

/* ---- Encoding (RFC 1522 section 5) ------------------------------------------------------------- */

/* Encodes a field's value, of any field. All ASCII stays as it is. A value that is one address from end to
   end, no group, is written anew, phrase <address> (comment), and each of the three is encoded by itself as
   by rfc1522encoding2; the inside of a phrase in quotes is encoded, the quotes stay, and so does an address
   of ASCII. Any other value, such as one that ends in a comma, is taken for text, as by rfc1522encoding2.
   A lone word is an address, too; the last comment of an address is kept, up to 255 characters of it.
   Takes the address parser's lock. */
VEL_API char* rfc1522encoding(const char* value);
VEL_API char* rfc1522encoding_wmc(const char* value, const char* charset); /* null for a null charset */

/* Encodes text in which comments stand in parentheses: what is outside and what is inside of each is encoded
   as by rfc1522encode, from column 0 on. A comment ends at the first ")". " (" is written for "(", so that a
   blank before it makes two; blanks at the end go, but not where encoding is switched off. */
VEL_API char* rfc1522encoding2(const char* text);
VEL_API char* rfc1522encoding2_wmc(const char* text, const char* charset); /* writes "(" for "(" */

/* Encodes text without comments. All ASCII stays as it is. Else each run of words, parted by one blank, that
   all have a byte above 127 becomes one encoded word, or several where the line is too short; words of ASCII
   stay, and never begin a new line. Blanks and line ends at the end go. EnableRFC1522Encoding is not looked
   at. */
VEL_API char* rfc1522encode(const char* text);
VEL_API char* rfc1522encode_wmc(const char* text, const char* charset);

/* ---- Decoding (RFC 1522 section 6) ------------------------------------------------------------- */

/* Decodes the encoded words of a field's value. A word counts as one of the local charset when its charset
   is a prefix of that one's name, in any case; a word of another stays as it stands. So do "_" and the blanks
   between two words.
   Between "=?" and the first "?=" behind the marker is a word; its marker is the first "?Q?" of all that
   follows, where there is none the first "?q?", then "?B?", then "?b?". What follows the last whole word
   stays as it stands.
   A "Q" escape that is none yields 0xFF, one that is cut short stays; nothing of "B" is checked. A word
   whose bytes include NUL ends before it.
   Null for an empty value, too. */
VEL_API char* rfc1522decoding(const char* value);
VEL_API char* rfc1522decoding_wmc(const char* value); /* decodes words of any charset */

/* Returns the charset of a text's first encoded word: all between the first "=?" and a marker that "?="
   follows somewhere. The marker is the first "?b?", where there is none the first "?B?", then "?q?", then
   "?Q?"; markers are read from left to right and do not overlap. Null when there is no word. */
VEL_API char* Get1522Charset(const char* text);

#ifdef __cplusplus
}
#endif

#endif
