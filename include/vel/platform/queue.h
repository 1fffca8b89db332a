/* The message queue that libvel submits to. A gateway may put a library of its own behind the seven calls from
   MQInit to DiscardMQEntry.

   An entry is open, and nobody's but its maker's, from CreateMQEntry until exactly one of CloseMQEntry, which shows
   it to consumers by one atomic step, or DiscardMQEntry. Both end its context, whatever they return. A context is
   used by one thread at a time, and only by the process that made it. Truth is returned as a byte: non-zero for
   success. A null context is harmless: the call fails.

   The local library takes no messages yet: each call fails and says so in the log at level 1. */
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
   entries that are open stay so.
     host    ignored
     module  the calling module's name, which stands in the queue's log lines; null counts as empty
   Returns non-zero on success. */
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
   and its files are gone. An entry without recipients is held for the operator. */
VEL_API unsigned char CloseMQEntry(MQContext* context);

/* Abandons the entry and removes its files. Returns non-zero on success. */
VEL_API unsigned char DiscardMQEntry(MQContext* context);

#ifdef __cplusplus
}
#endif

#endif
