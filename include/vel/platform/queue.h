/* The message queue that libvel submits to. A gateway may put a library of its own behind the seven calls from
   MQInit to DiscardMQEntry.

   An entry is open, and nobody's but its maker's, from CreateMQEntry until exactly one of CloseMQEntry, which shows
   it to consumers by one atomic step, or DiscardMQEntry. Both end its context, whatever they return. A context is
   used by one thread at a time, and only by the process that made it. Truth is returned as a byte: non-zero for
   success. A null context is harmless: the call fails.

   The local library keeps envelopes and states in a database and messages in files, in a directory of a local file
   system. What a call cannot do it says in the log, at level 1; level 3 tells what becomes of each recipient. */
#ifndef VEL_PLATFORM_QUEUE_H
#define VEL_PLATFORM_QUEUE_H

#include "vel/envelope.h"
#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One queue entry that is being made. What it holds is the queue library's affair. */
typedef struct MQContext MQContext;

/* Connects to the queue below [Gateway] QueueDirectory. It may be called again, also when the setting has changed;
   entries and consumers that are open stay so, where they were opened.
     host    ignored
     module  the calling module's name, which stands in the queue's log lines; null counts as empty
   Returns non-zero on success. It fails where there are messages whose tables are gone, too: they are not new. */
VEL_API unsigned char MQInit(const char* host, const char* module);

/* Opens a new entry: an empty message file, which the maker fills, and its message lock.
   Returns its context; null when the queue is not connected, little space is left or a system call fails. */
VEL_API MQContext* CreateMQEntry(void);

/* Returns the path of the entry's file with an extension: ".msg" for the message, "" for the bare base path, whose
   last part is the short identifier (lower-case letters and digits). The text belongs to the context and lives as
   long. The path, which never changes, is under its message lock, which the caller gives up with
   unlockmsg(base path).
     extension  null counts as empty
   Null when memory runs out. */
VEL_API const char* GetMQPathName(MQContext* context, const char* extension);

/* Names the channel that shall take the entry. A second call replaces the first.
     channel   copied; null or empty fails
     priority  kept for consumers; libvel passes 255
   Returns non-zero on success. */
VEL_API unsigned char InsertMQChannel(MQContext* context, const char* channel, int priority);

/* Hands over the envelope, all of which is copied. A second call replaces the first.
     envelope  one sender and any number of recipients, none included; its lists are reset. Null texts in it count
               as empty. Null, or another number of senders, fails.
   Returns non-zero on success. */
VEL_API unsigned char PutMQEnvelope(MQContext* context, struct stEnvelope* envelope);

/* Commits the entry: when the call returns non-zero, the entry is on disk and consumers see it. Otherwise (no
   channel, no envelope, an empty message file or another one in its place, a failed system call) nobody ever sees it
   and its files are gone. Only when the disk takes nothing more at all, so that a commit which has failed cannot be
   written over, do the files stay until they are reclaimed; a crash of the system before that may show the entry. An
   entry without recipients is held for the operator. */
VEL_API unsigned char CloseMQEntry(MQContext* context);

/* Abandons the entry and removes its files. Returns non-zero on success. */
VEL_API unsigned char DiscardMQEntry(MQContext* context);

/* What follows is the local library's own, for those who take messages out of the queue and for operators. libvel
   does not call it. Conventions: an entry is named by its short identifier, its base path will do as well. Times are
   microseconds since 1970. A count of -1 is a failure, told in the log at level 1; texts that are null count as
   empty. Any thread. */

/* The states of a recipient, as bits. */
enum { MQ_WAITING = 1, MQ_CLAIMED = 2, MQ_HELD = 4 };

/* All recipients of an entry. */
enum { MQ_ALL = -1 };

/* A recipient of an entry in the queue. */
typedef struct MQRecipient {
    int32_t number; /* its place in the envelope, from 0 */
    int32_t state;
    int32_t attempts; /* how often it has been claimed */
    int32_t notify;   /* this and the texts down to text2: as in _envRecip */
    int64_t due;      /* its turn; before it, one that was deferred is not claimed */
    const char* channel;
    const char* address;
    const char* originalRecipient;
    const char* text;
    const char* text2;
    const char* reason; /* why it was deferred or held last */
} MQRecipient;

/* An entry in the queue, with those of its recipients that a call is about. An entry that was committed without
   recipients has a single one, with an empty address, which is held. */
typedef struct MQEntry {
    const char* id;
    const char* path; /* the message file; nobody may change it */
    const char* channel;
    int64_t arrival;
    int64_t size; /* of the message, in bytes */
    int32_t priority;
    int32_t number;  /* as in stEnvelope */
    int32_t number2; /* as in stEnvelope */
    int32_t recipientCount;
    const MQRecipient* recipients;
    _envFrom sender;
} MQEntry;

/* Frees an entry that a call has handed out, texts and all; null is harmless. */
VEL_API void MQFreeEntry(MQEntry* entry);

/* One who takes messages out of the queue. What it holds is the queue library's affair. */
typedef struct MQConsumer MQConsumer;

/* Makes the process a consumer, which lives until MQCloseConsumer or the end of the process; what dead processes
   have left is reclaimed. The child of a fork is no consumer; its parent's claims seem alive until it ends or calls
   exec as well. MQInit comes first.
     who  stands in the lines of accounting
   Returns the consumer; null on failure. */
VEL_API MQConsumer* MQOpenConsumer(const char* who);

/* Ends a consumer. Recipients that it has claimed may be claimed by others from now on.
   Returns 1; 0 for null or when its claims could not be given back at once. */
VEL_API int MQCloseConsumer(MQConsumer* consumer);

/* Claims the entry whose turn it is, for this consumer alone: the one with the recipient that has been due longest,
   then the lowest identifier. Each claim counts as an attempt. It is a lease: it ends with its time, or at once when
   the consumer dies; then the recipients are due again, behind all that was due before. Setting the clock ends no
   lease, and keeps only those waiting that were deferred. A recipient whose message file is gone, has another size or
   is no regular file is held, with a log line.
     channels  names, compared exactly, behind them a null; null: all channels
     limit     how many due recipients of the entry are claimed at most; 0: all of these channels
     lease     seconds, above 0
     entry     receives the entry with the claimed recipients, the longest due first; see MQFreeEntry
   Returns 1; 0 when nothing is due; -1. */
VEL_API int MQClaim(MQConsumer* consumer, const char* const* channels, int limit, int lease, MQEntry** entry);

/* The following seven are about recipients that the consumer has claimed, and no others.
     recipient  its number, or MQ_ALL
   Each returns how many recipients it was, 0 when the consumer has no such claim (any more), -1. */

/* Lets the lease end so many seconds from now. */
VEL_API int MQExtend(MQConsumer* consumer, const char* id, int recipient, int lease);

/* Makes recipients claimable again as they were. */
VEL_API int MQGiveBack(MQConsumer* consumer, const char* id, int recipient);

/* The message is delivered to the recipient. With its last recipient the entry ends and its files go. */
VEL_API int MQFinish(MQConsumer* consumer, const char* id, int recipient);

/* It cannot be delivered, ever; the recipient goes as with MQFinish, and the caller tells the sender. */
VEL_API int MQFail(MQConsumer* consumer, const char* id, int recipient, const char* reason);

/* It could not be delivered now: another attempt is due at a time. */
VEL_API int MQDefer(MQConsumer* consumer, const char* id, int recipient, int64_t due, const char* reason);

/* Keeps recipients in the queue until an operator decides. */
VEL_API int MQHold(MQConsumer* consumer, const char* id, int recipient, const char* reason);

/* The following three are the operator's, and leave claimed recipients alone.
     recipient  its number, or MQ_ALL
     who        stands in the lines of accounting
   Each returns how many recipients it was, 0 when there was none, -1. */

/* Holds recipients that wait. */
VEL_API int MQHoldEntry(const char* id, int recipient, const char* reason, const char* who);

/* Makes held recipients due at once. */
VEL_API int MQReleaseEntry(const char* id, int recipient, const char* who);

/* Removes recipients that wait or are held; with its last recipient the entry ends and its files go. */
VEL_API int MQRemoveEntry(const char* id, int recipient, const char* who);

/* Reads an entry with all of its recipients.
     entry  receives it; see MQFreeEntry
   Returns 1; 0 when there is no such entry; -1. */
VEL_API int MQReadEntry(const char* id, MQEntry** entry);

/* Is shown an entry; it lives until the function returns. Non-zero: go on. */
typedef int (*MQEntryVisitor)(void* context, const MQEntry* entry);

/* Shows the entries in the order of their identifiers, which is that in which they were opened, each
   once, with those of its recipients that match. What comes and goes meanwhile is shown or not.
     channel  a name, compared exactly; null: all channels
     states   bits; 0: all states
     after    where to begin, behind this identifier; null or empty: with the first
   Returns how many were shown, or -1. */
VEL_API int MQListEntries(const char* channel, int states, const char* after, MQEntryVisitor visitor, void* context);

/* How many recipients of a channel are in a state. */
typedef struct MQCount {
    const char* channel;
    int32_t state;
    int64_t recipients;
    int64_t oldest; /* the first arrival */
} MQCount;

/* Is shown a count. */
typedef void (*MQCountVisitor)(void* context, const MQCount* count);

/* Shows a count for each channel and state that has recipients, in this order. Returns how many, or -1. */
VEL_API int MQCountEntries(MQCountVisitor visitor, void* context);

/* Returns how many bytes are free where the queue is, or -1. */
VEL_API int64_t MQFreeBytes(void);

/* Is shown what is wrong: with an entry, or with the database when the identifier is empty. */
typedef void (*MQFindingVisitor)(void* context, const char* id, const char* finding);

/* Compares database and files: message files without entry, entries without their message file or with one of
   another size, stale message locks, faults of the database itself.
     repair  non-zero: holds what waits without its message, and reclaims
   Returns how many findings there were, or -1. */
VEL_API int MQCheck(int repair, MQFindingVisitor visitor, void* context);

/* Tells whether the queue can live where a directory is: on a file system of this machine alone. Needs no MQInit.
     path  null counts as empty
   Returns 1; 0 also when it cannot be told. */
VEL_API int MQIsLocal(const char* path);

/* Takes away what dead processes have left: open entries with their files, message locks without their message or
   more than a day old, claims. MQInit and MQOpenConsumer do so too. Returns how many open entries it was, or -1. */
VEL_API int MQReclaim(void);

#ifdef __cplusplus
}
#endif

#endif
