/* Building messages: header lines and a body, or parts, become a new message file.

   Each builder writes a new file in the temporary directory and returns its path, which the caller frees;
   MimeFreeFile (vel/mime.h) also removes the file. When anything fails the result is null and no file is left.
   Nothing that the caller passes is changed or kept. Any thread.

   Texts of header fields go out as they are given, but for the encoded words of RFC 1522: whoever passes texts that
   he does not trust looks first that there are no line breaks in them. Null and empty texts have no line; empty
   entries of a chain are passed over, and so are nodes without a text. */
#ifndef VEL_BUILD_H
#define VEL_BUILD_H

#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Writes one message, or one part of a message (RFC 2045).
     from         the sender's address
     to, cc       chains of addresses, one in each node; null has no line, a chain of nothing but empty entries an
                  empty one, which ends the header block. An address without "@" gets one with [Routing]
                  PrimaryRelayHostName or, when that is empty, with [Connection] GatewayHostName "." GatewayDomain;
                  one without "." behind its "@" gets "." GatewayDomain, unless [Options] QualifyRecipientHosts is NO
     subject      written with encoded words, never by way of JIS
     type         null is "application"
     subtype      null is "x-unknown"
     parameters   a chain of "attribute=value"; each value is written in double quotes (RFC 822 section 3.3), without
                  those that it has. A parameter without "=" goes out as it is. The last one that begins with "name="
                  also names the file in the disposition (RFC 2183); the first one names a uuencoded file; the first
                  one that begins with "charset=" tells whether a text is converted
     encoding     "base64", "quoted-printable", "x-uue", "x-uuencode" or "7bit", in any case; null is
                  "quoted-printable" for the type "text", else "base64". "7bit" copies lines; with the charset
                  ISO-2022-JP it converts Shift-JIS, with [Options] InvalidCharacterMark for what is none; of a
                  message/rfc822 it drops the queue's lines ("#F", "#R", "#D") in front
     id           Content-Id, with its angle brackets
     description  Content-description
     body         the file whose content becomes the body. In "7bit" a line goes up to its first NUL byte, and a last
                  line without LF is lost when it ends where a block of 4096 bytes does
     extra        a chain of header lines; line ends that are missing are added
     flags        0: all is written; else no content fields; bit 0: base64 and quoted-printable become uuencode
   Addresses become JIS when [Gateway] LocalCharSet is ISO-2022-JP and [Options] DisableJISinHeaders is NO.
   Logs "Cannot send unencoded binary via Mime." (any other encoding) and "ShiftJIS2JIS conversion failed." at level
   1; "Attempting to convert text file in ShiftJIS format." and "...Done." at level 6. */
VEL_API char* MimeBuildMessage(const char* from, const ms* to, const char* subject, const ms* cc, const char* type,
                               const char* subtype, const ms* parameters, const char* encoding, const char* id,
                               const char* description, const char* body, const ms* extra, int flags);

/* The same with a Bcc line behind the Cc line. */
VEL_API char* MimeBuildMessageWithBCC(const char* from, const ms* to, const char* subject, const ms* cc, const ms* bcc,
                                      const char* type, const char* subtype, const ms* parameters, const char* encoding,
                                      const char* id, const char* description, const char* body, const ms* extra,
                                      int flags);

/* Writes the From, To, Cc and Subject lines and copies a file behind them, line by line: the rest of the header block,
   the empty line and the body. The other arguments have no effect. A read that fails ends the copy, and the message
   is taken for whole. */
VEL_API char* MimeBuildMessageV2(const char* from, const ms* to, const char* subject, const ms* cc, const char* type,
                                 const char* subtype, const ms* parameters, const char* encoding, const char* id,
                                 const char* description, const char* body, const ms* extra, int flags);

/* Writes a multipart message around parts that are entities already, as MimeBuildMessage writes them without
   addresses and subject (RFC 2046 section 5.1).
     from, to, subject, cc, extra  as above
     parts       the paths of the parts' files, in order, ended by null; null is none. They are copied line by line,
                 as a "7bit" body is
     subtype     null is "mixed"
     parameters  further parameters of the Content-type line, behind the boundary
     flags       0: all is written; else the parts follow the header lines, with nothing before or between them
   Text for readers that know no MIME stands before the first part: that of the file [Options] mimePreambleFile, or,
   when the setting is "none" or the file may not be read, one of its own. It is left out when from, to, subject and
   cc are all null, so that the result may be a part itself.
   The boundary is "VEL.Boundary.", the time in seconds and the thread, so that one thread gets the same one again
   within a second. Logs nothing of its own. */
VEL_API char* MimeBuildMultipartMessage(const char* from, const ms* to, const char* subject, const ms* cc,
                                        char* const* parts, const char* subtype, const ms* parameters, const ms* extra,
                                        int flags);

/* The same with a Bcc line behind the Cc line. */
VEL_API char* MimeBuildMultipartMessageWithBCC(const char* from, const ms* to, const char* subject, const ms* cc,
                                               const ms* bcc, char* const* parts, const char* subtype,
                                               const ms* parameters, const ms* extra, int flags);

#ifdef __cplusplus
}
#endif

#endif
