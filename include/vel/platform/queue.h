/* The message queue that libvel submits to. A gateway may put a library of its own behind these
   names.

   An entry lives from CreateMQEntry until exactly one of CloseMQEntry or DiscardMQEntry, which also
   end its context. Truth is returned as a byte: non-zero for success.

   The local library takes no messages yet: each call fails and says so in the log at level 1. */
#ifndef VEL_PLATFORM_QUEUE_H
#define VEL_PLATFORM_QUEUE_H

#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One queue entry that is being made. What it holds is the queue library's affair. */
typedef struct MQContext MQContext;

/* Sender, recipients and delivery parameters of an entry. */
struct stEnvelope;

/* Connects to the queue. May be called again.
     host    the directory server's host name
     module  the calling module's name
   Returns non-zero on success. */
VEL_API unsigned char MQInit(const char* host, const char* module);

/* Returns the context of a new entry, or null. */
VEL_API MQContext* CreateMQEntry(void);

/* Returns the path of the entry's file with an extension (".msg"; "" for the bare identifier). The
   text belongs to the context and lives as long. The path is under its message lock, which the
   caller gives up with unlockmsg. Null for a null context. */
VEL_API const char* GetMQPathName(MQContext* context, const char* extension);

/* Names the channel that shall take the entry.
     priority  libvel passes 255
   Returns non-zero on success. */
VEL_API unsigned char InsertMQChannel(MQContext* context, const char* channel, int priority);

/* Hands over the envelope. The library copies what it needs. Returns non-zero on success. */
VEL_API unsigned char PutMQEnvelope(MQContext* context, struct stEnvelope* envelope);

/* Commits the entry: from now on consumers see it. Returns non-zero on success. */
VEL_API unsigned char CloseMQEntry(MQContext* context);

/* Abandons the entry and what belongs to it. Returns non-zero on success. */
VEL_API unsigned char DiscardMQEntry(MQContext* context);

#ifdef __cplusplus
}
#endif

#endif
