/* MIME messages: parsing into entities, access to them, extraction of their bodies. */
#ifndef VEL_MIME_H
#define VEL_MIME_H

#include "vel/frame.h"
#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One MIME entity. Every text is owned by the record and null where the field is absent. */
typedef struct MimeMsg {
    float mimeVersion;        /* 0: no MIME-Version field */
    char* contentID;          /* with its angle brackets */
    char* contentDescription; /* without its line end */
    char* contentType;        /* "text", "multipart", ...; "x-embedded" for an embedded uuencoded file */
    char* contentSubtype;
    char* contentTransferEncoding; /* as written */
    char* contentDisposition;      /* as written up to ";"; without parameters its CR LF is kept */
    ms* contentTypeParams;         /* "name=value", a quoted value with its quotes */
    ms* contentDispositionParams;
    char* fileName;            /* the message file */
    char* boundary;            /* of a container: its delimiter; "--VEL" stands for none */
    uint32_t headerStart;      /* offset of the first header line */
    uint32_t bodyEnd;          /* offset just past the body */
    uint32_t bodyStart;        /* offset of the body's first byte */
    uint16_t numChildren;      /* stays at 65535 when there are more */
    char* trueName;            /* file name found in a uuencode or BinHex body by MimeGetBody */
    int32_t nodeKind;          /* 0 not placed; 1 container, or a body that runs to the end; 2 child */
    struct MimeMsg** children; /* owned array; the records belong to the pool */
} MimeMsg;

/* The result of a parse: every record in the order in which it was met; record 0 is the message. */
typedef struct mime_msg_pool {
    MimeMsg** items;
    int32_t count;
} mime_msg_pool;

/* ---- Parsing --------------------------------------------------------------------------------- */

/* Parses a message file into its entities: as MIME (RFC 2045, 2046) when its header block has a
   MIME-Version of 1.x, else as a flat message.
     path    the message file, with CR LF line ends
     nested  non-zero: look into enclosed messages (message/rfc822 that is not encoded)
     pool    receives the records, null on failure; MimeFreeMessage releases them
   Returns the number of records. -1 for a null pool or path, silently for an empty path or a file
   that may not be read, else with a log line of the parser that gave up. Bodies are not held in
   memory. */
VEL_API int MimeParseMessage(const char* path, int nested, mime_msg_pool** pool);

/* Parses a MIME message, whatever its MIME-Version says: arguments and result of MimeParseMessage.
   Container records hold their parts as children. Text bodies are searched for uuencoded and BinHex
   files, which become children of the text. With [Options] StrictMimeParsing = YES (the default) the
   parameter grammar is strict, and a last part without a delimiter behind it is complained about
   before it is dropped.
   Logs at level 1, with -1: "ParseMimeMessage: filename not valid.", "... file cannot be read.",
   "... fileopen failed.", "... out of memory.", "... getline failed." (also, with success, for the
   dropped part), "... not a valid MIME message.", "... boundary line not valid.", "... boundary line
   is missing."; at level 6 each embedded file. */
VEL_API int ParseMimeMessage(const char* path, int nested, mime_msg_pool** pool);

/* Parses a message without MIME into a list of texts and of the uuencoded and BinHex files between
   them; there is no tree. Behind every file stands a text, empty or not. Result and pool as above.
   Logs at level 1, with -1: "ParseNonMimeMessage failed: fileopen failed.", "... getline failed.",
   "... out of memory.". */
VEL_API int ParseNonMimeMessage(const char* path, mime_msg_pool** pool);

/* Reads one header line into a record when it is a MIME field (RFC 2045 sections 3 to 8, RFC 2183).
     file    where continuation lines are read; a line that is none will be read again
     record  receives the field; earlier values of it are released
     line    the line from the field's name to its CR LF; may be the file's own line buffer
   Returns 0, also for every other field, and for a Content-Type that is none, which becomes
   application/octet-stream; -1 for a null argument, or with a log line for a field that is refused. */
VEL_API int ParseMimeHeaders(VEL_FILE* file, MimeMsg* record, char* line);

/* Releases all records of a parse and sets the caller's pointer to null; nothing for null. */
VEL_API void MimeFreeMessage(mime_msg_pool** pool);

/* Removes a file that a call has made, and frees its path; nothing for null and for an empty text. */
VEL_API void MimeFreeFile(char* path);

/* ---- Access ---------------------------------------------------------------------------------- */

VEL_API int MimeGetNumberOfMessage(const mime_msg_pool* pool);     /* number of records; -1 for null */
VEL_API MimeMsg* MimeGetMsg(const mime_msg_pool* pool, int index); /* null for null and out of range */

/* The record's own texts and chains; null for a null record. */
VEL_API char* MimeGetContentType(const MimeMsg* record);
VEL_API char* MimeGetContentSubtype(const MimeMsg* record);
VEL_API ms* MimeGetContentTypeParams(const MimeMsg* record);
VEL_API char* MimeGetContentDisposition(const MimeMsg* record);
VEL_API ms* MimeGetContentDispositionParams(const MimeMsg* record);
VEL_API char* MimeGetContentID(const MimeMsg* record);
VEL_API char* MimeGetContentDescription(const MimeMsg* record);
VEL_API char* MimeGetContentTransferEncoding(const MimeMsg* record);
VEL_API char* MimeGetTrueName(const MimeMsg* record);

/* Counts the leaves of a tree: every record with children adds their number less one.
     counter  in and out; start it at 1
   Returns 0; -1 for a null argument or without memory. */
VEL_API int MimeGetNumLeafBodyParts(const MimeMsg* record, int* counter);

/* Counts the records of a tree that have children, by adding to a counter. Result as above. */
VEL_API int MimeGetNumMultipartHeaders(const MimeMsg* record, int* counter);

/* ---- Bodies and headers ----------------------------------------------------------------------

   Each writes a new file with a name from _veltempnam and returns its path, which MimeFreeFile removes
   and frees; null on failure, with no file left. They log nothing of their own. Calls on different
   records may run at once. */

/* Writes one entity's body, decoded (RFC 2045 section 6): base64, quoted-printable, uuencode.
     record  null, or a bodyEnd before bodyStart, gives null; a uuencoded body sets its trueName
     raw     non-zero: header block and body as they are stored
     fd      an open descriptor of the message file, moved and left open; -1 opens the record's file
   A body that fails to decode is delivered as it stands. */
VEL_API char* MimeGetBody(MimeMsg* record, int raw, int fd);

/* Writes one entity's header block through its blank line, without queue envelope lines. Each line is decoded
   by itself as by rfc1522decoding; one that holds NUL stays as it stands. Null for a headerStart not before
   bodyEnd. A multipart's runs on into the text before its first delimiter. */
VEL_API char* MimeGetHeader(const MimeMsg* record);

/* Writes a text body without the files embedded in it, which are its children. Null for an empty
   body. */
VEL_API char* MimeGetBodyWithNoEmbeddedAttachment(const MimeMsg* record);

#ifdef __cplusplus
}
#endif

#endif
