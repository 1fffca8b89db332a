/* Notices: messages that go back undelivered, reports on delivery, and what the gateway itself has to say by mail.

   Each call builds a message in the temporary directory, submits it with MimeSendMessage (vel/build.h) and removes every
   file that it has made. Nothing that the caller passes is changed or kept. A path names a message of the queue without
   its ".msg"; null counts as empty. Nodes of a chain without a text or record are passed over. The postmaster is
   "postmaster@" and [Connection] GatewayHostName "." GatewayDomain. Any thread. */
#ifndef VEL_NOTIFY_H
#define VEL_NOTIFY_H

#include <time.h>

#include "vel/build.h"
#include "vel/envelope.h"
#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Bounces --------------------------------------------------------------------------------- */

/* Returns a message that cannot be delivered to its sender: a multipart/mixed with the reasons and all of the message.
     path        of the message
     sender      the envelope's; null asks GetEnvelopeFrom
     reasons     a chain, a line each, without line ends; null is none
     submission  handed on to MimeSendMessage
     queue       handed on to GetEnvelopeFrom
   A message without a sender goes to the postmaster as "... (envelope From missing)", with "Waring: trying to bonce
   message with no envelope from." at level 1. One from "<>" goes to nobody, or to the postmaster when [Options]
   BounceToPostmaster is YES. When [Options] bounceToPostmaster is YES, the postmaster gets a bounce too, but for
   messages of his own; whether that succeeds does not count. Either one is logged at level 3 with the message's size.
   From is [Options] BounceSender: "<>" and what has an "@" as it is, else completed with the gateway's name.
   Returns 0; 1 when the sender is "<>" and the postmaster got it; 2 when the sender is "<>" and nobody did ("Discard to
   bounce message with empty envelope From ( <> )." at level 6); -1 when anything fails, with "BounceMimeMessage failed:
   " and what did at level 1. */
VEL_API int BounceMimeMessage(const char* path, const _envFrom* sender, const ms* reasons, intptr_t submission,
                              void* queue);

/* The same with no more than the message's header block, which ends at the first line that begins with CR LF; the
   queue's own lines in it stay. The sender is that of GetEnvelopeFrom.
   Returns 0; 1 when the sender is "<>", whoever got it, and the message is said to be discarded in any case; -1, without
   a line of its own when the message cannot be read to the end of its header block. */
VEL_API int BounceMimeMessageHeader(const char* path, const ms* reasons, intptr_t submission, void* queue);

/* Sends a bounce with all of the message to the postmaster. unused has no effect.
   Returns 0; -1 with "BounceMimeMessageToPostmaster failed" and what did at level 1. */
VEL_API int BounceMimeMessageToPostmaster(const char* path, const ms* reasons, intptr_t submission, void* unused);

/* ---- Reports --------------------------------------------------------------------------------- */

/* The envelope of the message that is reported on. */
typedef struct DSNEnvelope {
    const char* sender;     /* whom the report is for; null and empty: nobody */
    const char* envelopeId; /* ENVID; null counts as empty */
    int32_t returnType;     /* RET: VEL_RET_FULL, anything else is VEL_RET_HDRS */
    int32_t reserved;       /* 0 */
    time_t arrival;         /* when the message came */
} DSNEnvelope;

/* What is reported of each recipient. */
typedef struct PerRecipChain {
    const PerRecipField* record;
    struct PerRecipChain* next;
} PerRecipChain;

/* Builds and submits a delivery status notification (RFC 3464), a multipart/report with a text, a
   message/delivery-status and the message: all of it when a recipient's action is "failed" and the envelope wants it,
   else its header block without the queue's lines, read under its message lock where that can be had.
     path        of the message
     envelope    null: no sender, no ENVID, header block only, arrived now
     subject     of the report
     lines       the text, each line with its line end; in quoted-printable when a byte is above 127, with [Gateway]
                 LocalCharSet as its charset
     recipients  null: there is no status part
   Fields go out as they are given: whoever passes texts that he does not trust looks first that there are no line breaks
   in them. Of a remoteMta 256 bytes count.
   The envelope's sender is "<>", From the one address of [Options] BounceSender, or the postmaster. A report to "<>" is
   submitted for the postmaster; one of a failure for the postmaster too, when [Options] BounceToPostmaster is YES in its
   first three letters.
   Returns 0; -1 when anything fails: "Out of memory." or "putline failed." for the status, "getline failed." or "putline
   failed." for the header block, at level 1. */
VEL_API int GenerateDSNMessage(const char* path, const DSNEnvelope* envelope, const char* subject, const ms* lines,
                               const PerRecipChain* recipients);

/* The same for the postmaster, of a message that came now, with all of it. */
VEL_API int GenerateDSNMessageToPostmaster(const char* path, const char* subject, const ms* lines,
                                           const PerRecipChain* recipients);

/* Does nothing. Returns 0. */
VEL_API int GenerateDSNMessageForAllRecipients(void);

/* ---- Messages of the gateway's own ----------------------------------------------------------- */

/* Tells whether a file can go as plain text.
   Returns 1 when no byte is above 127 ("file is ASCII" at level 6), as far as the file can be read; 0 when one is
   ("IsFileAscii: file contains binary data - using base64" at level 6); 1 when the file cannot be opened, with
   "IsFileAscii: failed to open file %.256s" at level 1. */
VEL_API int IsFileAscii(const char* path);

/* Sends a multipart/mixed of lines of text and files.
     sender      of the message and of its envelope
     channel     who takes the message
     to          a chain of addresses, one in each node; null is none
     subject     null has no line
     submission  handed on to MimeSendMessage
     lines       a chain, without line ends, which become the first part; null has none
     files       a chain of paths, a part each, named by what stands behind the last "/"; null is none
     unused      has no effect
   A file for which IsFileAscii answers 1 goes as text/basic in 7bit, of each line what stands in front of a NUL. Of any
   other one GetMagicFromExtension (vel/magic.h) tells the type and, in its secondContentType, the encoding: by what
   stands behind the last "." of the path, up to a blank, at most 9 bytes. A type that is not known is
   application/x-unknown in base64.
   Returns 0, also when the queue refuses the message; -1 when it cannot be built, with "GenerateMimeMessage failed: " and
   what did at level 1. */
VEL_API int GenerateMimeMessage(const char* sender, const char* channel, const ms* to, const char* subject,
                                intptr_t submission, const ms* lines, const ms* files, int unused);

/* Sends a log file to the postmaster, from himself, by GenerateMimeMessage: the subject is "old log file " and the
   file's name.
     path        null: the file that [Log] Target names, with ".1" behind its name, as log rotation leaves it
     submission  handed on to MimeSendMessage
   Returns 0; -1 with "SendOldLogfile failed: " and what did at level 1 when the file cannot be opened, also when there is
   none because the log goes elsewhere, and when the message cannot be built. */
VEL_API int SendOldLogfile(const char* path, intptr_t submission);

#ifdef __cplusplus
}
#endif

#endif
