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
    float mimeVersion;             /* 0: no MIME-Version field */
    char* contentID;               /* with its angle brackets */
    char* contentDescription;      /* without its line end */
    char* contentType;             /* "text", "multipart", ...; "x-embedded" for an embedded uuencoded file */
    char* contentSubtype;
    char* contentTransferEncoding; /* as written */
    char* contentDisposition;      /* as written up to ";"; without parameters its CR LF is kept */
    ms* contentTypeParams;         /* "name=value", a quoted value with its quotes */
    ms* contentDispositionParams;
    char* fileName;                /* the message file */
    char* boundary;                /* of a container: its delimiter; "--VEL" stands for none */
    uint32_t headerStart;          /* offset of the first header line */
    uint32_t bodyEnd;              /* offset just past the body */
    uint32_t bodyStart;            /* offset of the body's first byte */
    uint16_t numChildren;          /* stays at 65535 when there are more */
    char* trueName;                /* file name found in a uuencode or BinHex body by MimeGetBody */
    int32_t nodeKind;              /* 0 not placed; 1 container, or a body that runs to the end; 2 child */
    struct MimeMsg** children;     /* owned array; the records belong to the pool */
} MimeMsg;

/* The result of a parse: every record in the order in which it was met; record 0 is the message. */
typedef struct mime_msg_pool {
    MimeMsg** items;
    int32_t count;
} mime_msg_pool;

/* ---- Parsing --------------------------------------------------------------------------------- */

VEL_API int MimeParseMessage(const char* path, int nested, mime_msg_pool** pool);
VEL_API int ParseMimeMessage(const char* path, int nested, mime_msg_pool** pool);
VEL_API int ParseNonMimeMessage(const char* path, mime_msg_pool** pool);
VEL_API int ParseMimeHeaders(VEL_FILE* file, MimeMsg* record, char* line);
VEL_API void MimeFreeMessage(mime_msg_pool** pool);
VEL_API void MimeFreeFile(char* path);

/* ---- Access ---------------------------------------------------------------------------------- */

VEL_API int MimeGetNumberOfMessage(const mime_msg_pool* pool);
VEL_API MimeMsg* MimeGetMsg(const mime_msg_pool* pool, int index);
VEL_API char* MimeGetContentType(const MimeMsg* record);
VEL_API char* MimeGetContentSubtype(const MimeMsg* record);
VEL_API ms* MimeGetContentTypeParams(const MimeMsg* record);
VEL_API char* MimeGetContentDisposition(const MimeMsg* record);
VEL_API ms* MimeGetContentDispositionParams(const MimeMsg* record);
VEL_API char* MimeGetContentID(const MimeMsg* record);
VEL_API char* MimeGetContentDescription(const MimeMsg* record);
VEL_API char* MimeGetContentTransferEncoding(const MimeMsg* record);
VEL_API char* MimeGetTrueName(const MimeMsg* record);
VEL_API int MimeGetNumLeafBodyParts(const MimeMsg* record, int* counter);
VEL_API int MimeGetNumMultipartHeaders(const MimeMsg* record, int* counter);

/* ---- Bodies and headers ---------------------------------------------------------------------- */

VEL_API char* MimeGetBody(MimeMsg* record, int raw, int fd);
VEL_API char* MimeGetHeader(const MimeMsg* record);
VEL_API char* MimeGetBodyWithNoEmbeddedAttachment(const MimeMsg* record);

#ifdef __cplusplus
}
#endif

#endif
