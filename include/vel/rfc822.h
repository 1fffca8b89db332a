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
    char* canon;   /* canonical form: a@b.c, <@r:a@b> for a source route, a whole group "g: a@b, c@d;" */
    char* orig;    /* the address as written, without the blanks and commas around it */
    char* phrase;  /* display name, words joined by one blank, quotes kept; or empty */
    char* comment; /* the last comment's text, at most 255 characters; or empty */
    char* local;   /* local part; that of the last member for a group */
    char* domain;  /* the last domain, or empty */
    struct recipient* next;
} recipient;

/* A list of addresses. The table itself is the caller's. */
typedef struct RecipTbl {
    recipient* first;
    recipient* last;
    uint32_t count;
} RecipTbl;

/* Parses an address list: the value of a To, Cc or From field (RFC 822 section 6.1).
     text   is changed: each backslash before a double quote, and the quote, become two blanks;
            null counts as empty
     table  receives the addresses, in order; null gives 0
     reset  non-zero: the table is emptied first, and nothing in it freed; 0: records are appended
   Returns the table's count. 0, with the table as it was but for the reset, when the text is blank or
   its double quotes do not pair up; 0 also without memory, what was parsed by then being in the table.
   An address that does not parse, or has a part of more than 255 characters, is left out: the list goes
   on behind the next comma. So a group whose canonical text passes 255 characters is left out up to the
   member where that happens, and the members behind that one are read one by one (a kept oddity). A
   comment that does not end takes its address and the rest of the list with it, a "[" that does not end
   takes what stands before it in its address; of a group the members before either stay. A ";" behind a
   mailbox separates as a comma does, unless the mailbox is a lone word.
   Clear_RT releases the records. Logs nothing. Any thread: the address parser's lock is held. */
VEL_API uint32_t RecipParse(char* text, RecipTbl* table, int reset);
VEL_API uint32_t VEL_RecipParse(char* text, RecipTbl* table, int reset); /* the same */

/* The same without the lock. Any thread. */
VEL_API uint32_t ST_RecipParse(char* text, RecipTbl* table, int reset);

/* RecipParse without a reset, into a table that is made when it is missing.
     table  *table may be null: it receives a malloc'ed table then, which the caller clears and frees;
            null gives 0
   Returns the table's count, or 0 as RecipParse does. */
VEL_API uint32_t AddParse(char* text, RecipTbl** table);

/* Parses one address, the first of a text.
     text    is changed as by RecipParse, to its end; null gives null
     record  receives canon, phrase, comment, local and domain, what it held there being freed; orig and
             next are left alone. It stays as it is when nothing parses, and is cleared without memory.
             Null: the text is not looked at
   Returns where parsing stopped, in the text: behind an address and the comma or ";" that ends it,
   behind a group's ";", at the comma behind what does not parse, or at the text's NUL.
   Logs nothing. Takes no lock. Any thread. */
VEL_API char* ParseAddr(char* text, recipient* record);

/* Frees every record of a table and empties it. The table itself stays. Null is nothing to do. */
VEL_API void Clear_RT(RecipTbl* table);

/* Frees a record's six texts and sets them to null; next is left alone. Null is nothing to do. */
VEL_API void Clear_RP(recipient* record);

/* Returns a new record, all null, for the caller to free; null without memory. */
VEL_API recipient* AllocateRecipient(void);

/* Puts a copy of a text in the place of a text that a record owns.
     text   null leaves the field null
     field  the old text is freed; null gives 0
   Returns 1; 0 without memory, the field being null then. */
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

/* Reads a date: [weekday ","] day month year [hour [":" minute [":" second]]] [zone] (RFC 822
   section 5.1). Months are "Jan" to "Dec" in this case, longer names count by their first three
   letters; years are 1980 to 2037, 80 to 99 and 0 to 37 standing for 19.. and 20..; the zone is read
   as getzone does. The weekday is not compared with the date.
     text  null gives 0
     time  receives a malloc'ed record that the caller frees; null when the result is 0
   Returns 1; 0 for a text that is no such date and without memory. Logs nothing. Any thread. */
VEL_API int rfc2UTC(const char* text, UTCtime** time);

/* The same for ctime's layout: [weekday] month day hour ":" minute ":" second [zone name] year. An
   offset of 0, given or not, is replaced by the system's offset without daylight saving time, with
   the zone's flag set (a kept oddity). */
VEL_API int ctime2UTC(const char* text, UTCtime** time);

/* Writes a date: "Mon, 1 Feb 1999 10:20:30 -0500", the seconds and the zone as the flags say, without
   a zone "+0000". The weekday is computed.
     time    a year of 0 to 37 or 80 to 99 is completed in the record, and logged: "Received year
             value %i.  Changing it to %i."
     output  64 bytes; empty when the result is 0; longer text is cut
   Returns 1; 0 for a null record or output, a month outside 1 to 12, and any other year outside 1980
   to 2037, which is logged: "Received invalid year value %i.  Use current year instead." (none is
   used). Both lines come from "ParseDate" at level 6. */
VEL_API int UTC2rfc(UTCtime* time, char* output);

/* Returns the weekday of a record's date, 0 (Saturday) to 6 (Friday); -1 for a null record. */
VEL_API int makewkday(const UTCtime* time);

/* Reads a zone: "+" or "-" with hhmm (four characters, taken for digits unchecked), or a name of RFC
   822 section 5.1 or one of some others, in capitals. White space before it is skipped.
   Returns minutes east of UTC; -1 when the text is no zone, and for "-0001". The minutes of a name
   west of UTC count eastward: HST (-1030) gives -570 (a kept oddity). */
VEL_API int GetZoneInt(const char* text);

/* The same, stored into the record with flag 1 set; zone 0 without the flag when the text is no zone.
   Nothing for a null text or record. */
VEL_API void getzone(const char* text, UTCtime* time);

/* Writes a calendar time in the system's local time: "Mon, 1 Feb 1999 10:20:30 -0500". Daylight
   saving time counts as one hour.
     output  64 bytes; empty when the result is -1
   Returns 0; -1 for a null output and for a time that ctime cannot write. */
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
    UTCtime* time;           /* the current time for a field that is no date; null when that has none */
    int32_t has_date;        /* a Date field stood in the block */
    int32_t has_resent_date; /* a Resent-Date field stood in the block */
} date822;

/* One header block. Address lists gather every occurrence of their field; texts and the date keep
   the first. Null where the field is absent. The lines of a folded text are parted by CR LF TAB, in
   the sender's by a blank. Made by New822Header, released by Free822Header. */
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
    ms* other;    /* "Keyword: value", in order; of the name only the first letter is a capital */
    date822* date;
} addr822;

/* Returns an empty record, or null without memory. */
VEL_API addr822* New822Header(void);

/* Releases a record with all that it holds; nothing for null. */
VEL_API void Free822Header(addr822* header);

/* Reads a header block from a file's position on, up to and including its empty line, or to the end
   of the file (RFC 822 section 3). Continuation lines are joined; each field is stored as ParseLine
   does.
     handle       a descriptor of the pool
     header       fields are added to what stands in it; null gives 0
     lines        receives the number of lines read, the empty one included; may be null
     status_line  receives the number of the last line of a Status field that another line follows,
                  else 0; may be null
   Returns 1; 0 with "getline failed." (the handle is unknown or a read failed), "malloc failed." or
   "realloc failed.": the fields before are stored, the one whose end had not been seen is not. A field folded over more than 63 KB ends the
   block, with result 1 and "too many headers to parse."; the line that was too much is read. All are
   logged by "ParseHdr" at level 1. A line of more than 1024 bytes comes in pieces, each of which
   counts as a line. Any thread; one block at a time is parsed, under the header parser's lock. */
VEL_API int ParseHdr(int handle, addr822* header, int* lines, int* status_line);
VEL_API int VEL_ParseHdr(int handle, addr822* header, int* lines, int* status_line); /* the same */

/* Stores one field.
     field   "Name: value", without its line end; lines that continue it may stand in it. It is not
             changed
     header  receives the value
   An unknown field goes to the other lines. "From " begins a mailbox's separator line.
   Returns the field's code, 1 to 29; -1 for a line that is no field, which is not stored, for null,
   and without memory ("malloc failed.", by "ParseLine" at level 1). A Received or other line costs time
   in proportion to the chain that it is appended to; ParseHdr finds a chain's end once. Takes no lock of
   the header parser: a record is for one thread at a time. */
VEL_API int ParseLine(const char* field, addr822* header);

/* Skips a message's body in a mailbox file. Lines of more than 1023 characters come in pieces, each
   of which counts as a line.
     stream    stands in the body; is left at the next message's separator line, or at the end
     position  receives that offset, -1 where the stream has none; may be null
     lines     the number of the body's lines is added to it; may be null
   Returns 1 when another message follows, -1 at the end of the file and for a null stream. Logs
   nothing. */
VEL_API int ParseBody(FILE* stream, long* position, int* lines);

/* Tells whether a line begins a message in a mailbox file: "From " and more, with two colons anywhere
   in the line, and digits behind its last blank. Of the n characters there, line end included, the
   first (n + 3) / 2 must be digits, and there must be as many: all four of a year before a line end,
   the first three of a year that ends the text (a kept oddity). Returns 1 or 0; 0 for null. */
VEL_API int isNextMsgHeader(const char* line);

/* Creates the locks of the header parser and of the address parser, and deletes them. Start-up and
   shut-down call them; a second call of either does nothing. One thread. */
VEL_API void Init822Parser(void);
VEL_API void Terminate822Parser(void);

#ifdef __cplusplus
}
#endif

#endif
