/* File types: one table between file extensions, MIME content types and Macintosh type and creator codes.

   The table is the relation "magicdb" of the record database (vel/platform/diamond.h) in the directory [Gateway]
   QueueDirectory. That setting, and [Config] InstallDirectory, are here always those of the file "ostra.ini". */
#ifndef VEL_MAGIC_H
#define VEL_MAGIC_H

#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One type. Every field is a text of at most its length less one, padded with NULs. */
typedef struct MagicRecord {
    char extension[10]; /* the key; letter case does not count */
    char contentType[50];
    char contentSubtype[128];
    char secondContentType[50]; /* used as the transfer encoding of a part of this type */
    char secondContentSubtype[128];
    char macTypeCreator[10]; /* type and creator, each padded with blanks to four: "TEXTttxt" */
} MagicRecord;

/* ---- Lookups --------------------------------------------------------------------------------- */

/* Each opens the table for the call, locks it, takes the first record that matches, in the order in which they were
   added, and closes it. They return 0; -1 when nothing matches, an argument is null or the table cannot be used, and
   leave the result alone then. They need no libmagic_init. Any thread. */

/* Finds an extension, whatever its letter case. */
VEL_API int GetMagicFromExtension(const char* extension, MagicRecord* record);

/* Finds a Macintosh type and creator, letter case included. Either is padded with blanks to four bytes first.
     extension  null; or the record has to have this extension too, whatever its letter case */
VEL_API int GetMagicFromMacTypes(MagicRecord* record, const char* type, const char* creator, const char* extension);

/* Finds a content type and subtype, whatever their letter case; the record's second pair is not searched.
     extension  receives the extension, at most 10 bytes with the NUL */
VEL_API int GetDosExtFromCTandCST(char* extension, const char* type, const char* subtype);

/* Finds an extension, whatever its letter case.
     typeCreator  receives the type and creator as they are kept, at most 10 bytes with the NUL */
VEL_API int GetTypeCreatorfromDosExt(const char* extension, char* typeCreator);

/* ---- Start and end --------------------------------------------------------------------------- */

/* Opens the table for the maintenance calls. When it is missing, damaged or of another layout (the database's statuses
   3 and 22), what is there is renamed and "srcdb/magicdb.db" and "srcdb/magicdb.id0" below the install directory are
   copied to its place with CopyFile, which sets the process's umask. Logs as "Libmagic" "magic db opened" at level 6,
   or "magic db not opened" at level 1. Another call opens it anew. Returns the result of initialising the mutex that
   the maintenance calls take, 0 as a rule, also when the table is not open. One thread, as start-up. */
VEL_API int libmagic_init(void);

/* Closes the table. One thread. */
VEL_API void libmagic_fini(void);

/* ---- Maintenance ----------------------------------------------------------------------------- */

/* These share one open table, one position in it and one lock. They return -1 when the argument is null or the table
   is not open, else the database's status: 0 for success, DIA_END behind the last record. A change is on disk when
   the call returns. Any thread. */

/* Adds a record behind the last. Fields without a NUL are cut. That the extension is there already does not matter. */
VEL_API int InsMagicRecord(const MagicRecord* record);

/* Removes the first record of an extension, whatever its letter case. 0 also when there is none. */
VEL_API int DelMagicRecord(const char* extension);

/* Finds an extension, as GetMagicFromExtension. */
VEL_API int FindMagicRecord(const char* extension, MagicRecord* record);

/* Copy the first record, or the one behind the one that was met last, by any of these calls. */
VEL_API int GetFirstMagicRecord(MagicRecord* record);
VEL_API int GetNextMagicRecord(MagicRecord* record);

/* Overwrites the first record of the given record's extension. When there is none nothing is written, and the result
   is that of the walk that did not find it. */
VEL_API int UpdateMagicRecord(const MagicRecord* record);

/* Does nothing and returns 0. */
VEL_API int CreateMagicFile(void);

#ifdef __cplusplus
}
#endif

#endif
