/* Building messages, and putting them into the queue.

   Each builder writes a new file in the temporary directory and returns its path, which the caller frees;
   MimeFreeFile (vel/mime.h) also removes the file. When anything fails the result is null and no file is left; but a
   value goes out as it is given when memory to complete or to encode it is short.
   Nothing that the caller passes is changed or kept. Any thread.

   Texts of header fields go out as they are given, but for the encoded words of RFC 1522: whoever passes texts that
   he does not trust looks first that there are no line breaks in them. Null and empty texts have no line; empty
   entries of a chain are passed over, and so are nodes without a text. */
#ifndef VEL_BUILD_H
#define VEL_BUILD_H

#include "vel/envelope.h"
#include "vel/platform/queue.h"
#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Building -------------------------------------------------------------------------------- */

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

/* ---- Submission ------------------------------------------------------------------------------ */

/* Puts a copy of a message into the queue (vel/platform/queue.h), with its envelope. In front of it go a Received
   field, MIME-Version, Date and Message-ID where the header block has none, and a header that asks for a receipt.
   Its Date and Resent-Date lines are written anew, in one form.
     sender           the envelope's sender; one address counts in its canonical form, anything else as it is
     envelope_id      ENVID; null counts as empty, as do the other texts
     return_type      RET: 1 the header block, 2 all of the message
     unused, unused2  have no effect
     text             the submitter's own, kept with the sender
     channel          who takes the message
     recipients       an array of count records. Of several addresses in one text the first one counts, of a group its
                      last member; one without a domain gets [Routing] PrimaryRelayHostName or, when that is empty, [Connection] GatewayHostName
                      "." GatewayDomain; what is no address is taken as it is, what is empty left out
     date             for a message without a Date field; null or empty is now
     file             the message, with CR LF line ends: its header block ends at the first line that begins with CR LF.
                      It is copied line by line, as a "7bit" body is
     wants_receipt    non-zero: asks for a receipt in the header that [Options] rrqHeader names (Return-Receipt-To)
     no_mime_version  non-zero: no MIME-Version is added
   Returns the identifier, the entry's path without ".msg", under its message lock; ReleaseQueueId releases it. Null
   when anything fails: the queue has nothing of the message then.
   Logs "CreateMQEntry failed.", "Out of memory." and, behind a full disk, "putline: WriteFile failed." or "fileclose:
   WriteFile failed." at level 1; "Ignore empty recipient address." and "Received invalid date.  Adopting the current
   time instead." at level 6. Any thread. */
VEL_API char* MimeSendMessage(const char* sender, const char* envelope_id, int return_type, int unused,
                              const char* text, const char* channel, const _envRecip* recipients, int count,
                              const char* date, const char* file, intptr_t unused2, int wants_receipt,
                              int no_mime_version);

/* Recipients as a chain; a node without a record is passed over. */
typedef struct EnvRecipChain {
    const _envRecip* record;
    struct EnvRecipChain* next;
} EnvRecipChain;

/* Ends an entry whose message the caller has written into the file of VELGetNewMQId and ".msg".
     context     of VELGetNewMQEntry; null gives 0, with "CreateMQEntry failed." at level 1
     sender      its channel is not looked at; null gives 0
     recipients  taken as they are; text2 is not looked at
     channel     who takes the message
   Returns non-zero on success, as CloseMQEntry does. 0 otherwise, and the entry is given up; but without memory ("Out of
   memory" for the sender, "Out of memory." for a recipient, at level 1) and for a null sender it stays open. */
VEL_API int SubmitMQMessage(MQContext* context, const _envFrom* sender, const EnvRecipChain* recipients,
                            const char* channel);

/* Opens a new entry. Null with "CreateMQEntry failed." at level 1. */
VEL_API MQContext* VELGetNewMQEntry(void);

/* Returns an entry's identifier, for VELFreeMQId or ReleaseQueueId; null when there is none. */
VEL_API char* VELGetNewMQId(MQContext* context);

/* Frees an identifier, which may be null. The first one gives up the message lock too. */
VEL_API void ReleaseQueueId(char* identifier);
VEL_API void VELFreeMQId(char* identifier);

/* Returns the sender of a queued message, for FreeEnvFrom: null, always. A program that links the library's objects
   may define the call itself. */
VEL_API _envFrom* GetEnvelopeFrom(const char* path, void* queue);

/* Frees a malloc'ed record with its address, envelopeId and text; nothing for null. The channel stays. */
VEL_API void FreeEnvFrom(_envFrom* record);

/* What a report says of one recipient (RFC 3464 section 2.3). Texts are owned. */
typedef struct PerRecipField {
    char* originalRecipient;
    char* finalRecipient;
    char* action;
    char* status;
    char* remoteMta;
    char* diagnosticCode;
    int32_t lastAttempt; /* seconds since 1970; 0 and below: not said */
    int32_t willRetryUntil;
} PerRecipField;

/* Fills a record, whatever it holds, with copies of the texts, null for null. Returns 0; -1 for a null record, and
   without memory, when the record is cleaned. */
VEL_API int AssignPerRecipField(PerRecipField* record, const char* original_recipient, const char* final_recipient,
                                const char* action, const char* status, const char* remote_mta,
                                const char* diagnostic_code, int32_t last_attempt, int32_t will_retry_until);

/* Frees a record's texts, which become null; the numbers become -1. Nothing for null. */
VEL_API void CleanPerRecipField(PerRecipField* record);

/* Compares two uint32_t, for qsort. Returns -1, 0 or 1. */
VEL_API int compare_uniqueType(const void* a, const void* b);

#ifdef __cplusplus
}
#endif

#endif
