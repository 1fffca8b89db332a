#include "mime/message_pool.h"

#include <cstdlib>

#include "mime/growing_array.h"
#include "mime/record.h"

static_assert(sizeof(void*) != 4 || sizeof(mime_msg_pool) == 8);

int AddToMsgPool(mime_msg_pool* pool, MimeMsg* record, int index) {
    if (!pool) return -1;
    if (index >= 0 && index < pool->count) {
        pool->items[index] = record;
        return 0;
    }
    if (!vel::make_room(pool->items, static_cast<std::size_t>(pool->count))) return -1;
    pool->items[pool->count++] = record;
    return 0;
}

int DelFromMsgPool(mime_msg_pool* pool, int index) {
    if (!pool || index < 0 || index >= pool->count) return -1;
    for (int i = index; i < pool->count; ++i) {
        FreeMsgNode(pool->items[i]);
        std::free(pool->items[i]);
    }
    pool->count = index;
    vel::shrink(pool->items, static_cast<std::size_t>(index));
    return 0;
}

MimeMsg* GetFromMsgPool(const mime_msg_pool* pool, int index) {
    return pool && index >= 0 && index < pool->count ? pool->items[index] : nullptr;
}

void FreeMsgPool(mime_msg_pool* pool) {
    if (!pool) return;
    vel::shrink(pool->items, 0);
    pool->count = 0;
}

extern "C" {

void MimeFreeMessage(mime_msg_pool** pool) {
    if (!pool || !*pool) return;
    DelFromMsgPool(*pool, 0);
    FreeMsgPool(*pool);
    std::free(*pool);
    *pool = nullptr;
}

int MimeGetNumberOfMessage(const mime_msg_pool* pool) { return pool ? pool->count : -1; }

MimeMsg* MimeGetMsg(const mime_msg_pool* pool, int index) {
    return pool && pool->items ? GetFromMsgPool(pool, index) : nullptr;
}

}  // extern "C"
