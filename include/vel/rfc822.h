/* RFC 822 addresses, header blocks and dates. */
#ifndef VEL_RFC822_H
#define VEL_RFC822_H

#include <stdio.h>
#include <time.h>

#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Addresses (RFC 822 section 6) ----------------------------------------------------------- */

/* One parsed address. All texts are owned; Clear_RP releases them. */
typedef struct recipient {
    char* canon;   /* canonical form: a@b.c, <@r:a@b> for a source route, a whole group */
    char* orig;    /* the address as written, without the blanks and commas around it */
    char* phrase;  /* display name, words joined by one blank, quotes kept; or empty */
    char* comment; /* the last comment's text, at most 255 characters; or empty */
    char* local;
    char* domain;
    struct recipient* next;
} recipient;

/* A list of addresses. The table itself is the caller's. */
typedef struct RecipTbl {
    recipient* first;
    recipient* last;
    uint32_t count;
} RecipTbl;

VEL_API uint32_t RecipParse(char* text, RecipTbl* table, int reset);
VEL_API uint32_t VEL_RecipParse(char* text, RecipTbl* table, int reset);
VEL_API uint32_t ST_RecipParse(char* text, RecipTbl* table, int reset);
VEL_API uint32_t AddParse(char* text, RecipTbl** table);
VEL_API char* ParseAddr(char* text, recipient* record);
VEL_API void Clear_RT(RecipTbl* table);
VEL_API void Clear_RP(recipient* record);
VEL_API recipient* AllocateRecipient(void);
VEL_API int AssignRp(const char* text, char** field);

/* ---- Dates (RFC 822 section 5) --------------------------------------------------------------- */

/* A broken-down time with its zone. */
typedef struct UTCtime {
    int32_t year;  /* four digits */
    int32_t month; /* 1 to 12 */
    int32_t day;   /* 1 to 31 */
    int32_t hour;
    int32_t minute;
    int32_t second;
    int32_t spare; /* 0 */
    int32_t zone;  /* minutes east of UTC */
    int32_t flags; /* 1: a zone was given; 2: seconds were given */
} UTCtime;

VEL_API int rfc2UTC(const char* text, UTCtime** time);
VEL_API int UTC2rfc(UTCtime* time, char* output);
VEL_API int makewkday(const UTCtime* time);
VEL_API int GetZoneInt(const char* text);
VEL_API void getzone(const char* text, UTCtime* time);
VEL_API int ctime2UTC(const char* text, UTCtime** time);
VEL_API int time_t2rfc822date(time_t time, char* output);

/* ---- Header blocks --------------------------------------------------------------------------- */

/* The addresses of one header field's occurrences. */
typedef struct addrlist822 {
    char* text; /* stays null */
    RecipTbl* recips;
    struct addrlist822* next;
} addrlist822;

/* The Date or Resent-Date field of a block, whichever came first. */
typedef struct date822 {
    UTCtime* time;
    int32_t has_date;        /* a Date field stood in the block */
    int32_t has_resent_date; /* a Resent-Date field stood in the block */
} date822;

/* One header block. Address lists gather every occurrence of their field; texts and the date keep
   the first. Null where the field is absent. Made by New822Header, released by Free822Header. */
typedef struct addr822 {
    addrlist822* to;
    addrlist822* resent_to;
    addrlist822* cc;
    addrlist822* resent_cc;
    addrlist822* bcc;
    addrlist822* resent_bcc;
    addrlist822* from;
    addrlist822* resent_from;
    addrlist822* reply_to;
    addrlist822* return_receipt_to;
    char* subject;
    char* sender;
    char* message_id;
    char* resent_message_id;
    char* in_reply_to;
    char* references;
    char* return_path;
    char* status;
    char* separator; /* the mailbox's "From " line */
    char* mime_version;
    char* content_type;
    char* content_transfer_encoding;
    char* content_id;
    char* content_description;
    ms* received; /* values, in order */
    ms* other;    /* "Keyword: value", in order */
    date822* date;
} addr822;

VEL_API addr822* New822Header(void);
VEL_API void Free822Header(addr822* header);
VEL_API int ParseHdr(int handle, addr822* header, int* lines, int* status_line);
VEL_API int VEL_ParseHdr(int handle, addr822* header, int* lines, int* status_line);
VEL_API int ParseLine(const char* field, addr822* header);
VEL_API int ParseBody(FILE* stream, long* position, int* lines);
VEL_API int isNextMsgHeader(const char* line);
VEL_API void Init822Parser(void);
VEL_API void Terminate822Parser(void);

#ifdef __cplusplus
}
#endif

#endif
