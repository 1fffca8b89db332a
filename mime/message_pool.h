// Pools of records: the result of a parse, and the containers by nesting level.
#ifndef VEL_MIME_MESSAGE_POOL_H
#define VEL_MIME_MESSAGE_POOL_H

#include "vel/mime.h"

// Puts a record at an index: at or past the count it is appended, else it replaces the one there,
// which is not freed. Returns 0; -1 for a null pool or without memory.
int AddToMsgPool(mime_msg_pool* pool, MimeMsg* record, int index);

// Frees the records from an index on. Returns 0; -1 for an index out of range.
int DelFromMsgPool(mime_msg_pool* pool, int index);

// The record at an index, or null.
MimeMsg* GetFromMsgPool(const mime_msg_pool* pool, int index);

// Frees the array, not the records.
void FreeMsgPool(mime_msg_pool* pool);

#endif
