/* The record database that libvel keeps its file types in. A gateway may put a library of its own behind these
   classes; libvel uses what stands here down to "the local library's own" and nothing else.

   A database is a directory. A relation in it is a table of records of one size, kept in the files NAME.db, the
   records, and NAME.id0, which says of what layout they are. Every call returns a status, 0 for success. A relation
   object is used by one thread at a time; any number of objects, in any threads and processes, may be open on one
   relation. No exception leaves the library. What goes wrong without being foreseen (a damaged file, a full disk) is
   told in the log, at level 1, as "Diamond".

   The local library keeps the records in a SQLite table. It holds locks on the file NAME.lock beside it, never on
   the others, and waits for them without end. The child of a fork may use the relations of its parent, which it opens
   anew, when the parent was in no walk and no group of changes as it forked. */
#ifndef VEL_PLATFORM_DIAMOND_H
#define VEL_PLATFORM_DIAMOND_H

#include "vel/types.h"

#ifdef __cplusplus

#include <memory>

enum {
    DIA_OK = 0,
    DIA_END = 1,        /* the walk is behind the last record */
    DIA_NO_RECORD = 2,  /* there is no current record */
    DIA_MISSING = 3,    /* NAME.db is missing, torn or something else */
    DIA_FAILED = 4,     /* a system call or the database failed */
    DIA_NOT_LOCKED = 5, /* the relation has to be locked for this */
    DIA_CLOSED = 6,     /* close() has closed it */
    DIA_LAYOUT = 22     /* NAME.id0 is missing, or tells of another layout */
};

/* A database. It has to live as long as its relations. */
class diamondBase {
  public:
    /* directory  copied; null counts as empty, and then no relation is found */
    VEL_API explicit diamondBase(const char* directory) noexcept;
    VEL_API ~diamondBase();
    diamondBase(const diamondBase&) = delete;
    diamondBase& operator=(const diamondBase&) = delete;

    /* Empty also when memory has run out. */
    VEL_API const char* directory() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/* A relation: its cursor and its current record. */
class diaRel {
  public:
    /* Opens a relation; status() says what came of it.
         name    of the files, without a slash
         layout  what the record's bytes mean; another text is another layout
         record  where the current record is to stand, size bytes that live as long as the relation */
    VEL_API diaRel(diamondBase& base, const char* name, const char* layout, void* record, size_t size) noexcept;
    VEL_API ~diaRel(); /* ends its lock, too */
    diaRel(const diaRel&) = delete;
    diaRel& operator=(const diaRel&) = delete;

    /* Whether the relation can be used: 0, DIA_MISSING, DIA_LAYOUT, DIA_FAILED or DIA_CLOSED. It is what was found
       when the relation was opened or locked last. */
    VEL_API int status() const;

    /* Closes the files and looks at them again. Returns status(). */
    VEL_API int open();
    /* Closes the files; a lock stays, and open() looks at them again. Where a locked relation was found to be
       DIA_MISSING or DIA_LAYOUT, what is there is renamed, with a number behind (NAME.db.1, NAME.id0.1), so that
       another relation can be put in its place and no record is lost; what was renamed so before, byte for byte, is
       not kept twice. The log tells the number, at level 1. Returns 0; otherwise nothing may be put there. */
    VEL_API int close();

    /* Waits until no other object has the relation locked, in any thread or process, and locks it. What others have
       changed or replaced meanwhile is seen from here on. It succeeds where the relation is DIA_MISSING or
       DIA_LAYOUT, too, so that one can be put in its place. A second object on the relation must not be
       locked by the same thread. Locking again does nothing. Returns 0; DIA_MISSING when there is no such directory;
       DIA_FAILED. */
    VEL_API int lock();
    /* Gives the lock up. Returns 0, or DIA_NOT_LOCKED. */
    VEL_API int unlock();

    /* The calls that follow return DIA_NOT_LOCKED without the lock, and status() unless it is 0.

       begin starts a walk: the next record is the first one. end gives up what the walk holds. A walk goes through
       the records in the order in which they were added. */
    VEL_API int begin();
    VEL_API int end();

    /* Makes the first record, or the one behind the last that was read, added or deleted, the current one, and copies
       its bytes. A walk may go on after the lock was given up and taken again. Returns 0; DIA_END when there is
       none, which leaves the current record's bytes alone. */
    VEL_API int first();
    VEL_API int next();

    /* Adds the current bytes as a new, last record; removes the current record; replaces it by the current bytes.
       When they return 0 the change is on disk, and a crash before that leaves the old record or the new one.
       del and put return DIA_NO_RECORD when nothing has been read or added, it has been removed, or others have changed
       the relation since. */
    VEL_API int add();
    VEL_API int del();
    VEL_API int put();

    /* What follows is the local library's own. libvel does not call it.

       Makes the files of an empty relation; DIA_FAILED when one of them is there. The relation has to be locked. */
    VEL_API int create();

    /* The changes from hold to keep are made as a whole, on disk when keep has returned 0; drop, or the end of the
       lock, undoes them. */
    VEL_API int hold();
    VEL_API int keep();
    VEL_API int drop();

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/* A record of the file types: texts, each with a NUL behind and padded with NULs. */
struct magicdbFields {
    char extension[10];
    char content_type[50];
    char content_subtype[128];
    char second_content_type[50];
    char second_content_subtype[128];
    char mac_type_creator[10];
};
static_assert(sizeof(magicdbFields) == 376, "as the layout has it");

/* The relation "magicdb", with its current record. */
class magicdb : public diaRel {
  public:
    explicit magicdb(diamondBase& base) noexcept
        : diaRel(base, "magicdb",
                 "extension:10 content_type:50 content_subtype:128 second_content_type:50 "
                 "second_content_subtype:128 mac_type_creator:10",
                 &fields, sizeof fields) {}

    magicdbFields fields{};
};

#endif

#endif
