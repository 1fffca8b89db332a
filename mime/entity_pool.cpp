#include "mime/entity_pool.h"

#include <new>

#include "frame/owned.h"
#include "mime/message_pool.h"
#include "mime/record.h"

namespace vel {

void expect_memory(int result) {
    if (result != 0) throw std::bad_alloc();
}

uint32_t size_of(const VEL_FILE& file) { return GetFileSize(file.fd, nullptr); }

EntityPool::EntityPool(const char* path) : path_(path), pool_(make_zeroed<mime_msg_pool>().release()) {}

MimeMsg& EntityPool::add(uint32_t header_start) {
    COwned<MimeMsg> record(AllocateNewMsg(path_));
    if (!record) throw std::bad_alloc();
    record->headerStart = header_start;
    if (AddToMsgPool(pool_.get(), record.get(), pool_->count) != 0) {
        FreeMsgNode(record.get());
        throw std::bad_alloc();
    }
    return *record.release();
}

MimeMsg& EntityPool::add_embedded(const char* type, const char* subtype, const char* encoding, uint32_t start,
                                  uint32_t end) {
    MimeMsg& record = add(start);
    record.contentType = copy_text(type).release();
    if (subtype) record.contentSubtype = copy_text(subtype).release();
    if (encoding) record.contentTransferEncoding = copy_text(encoding).release();
    record.bodyStart = start;
    record.bodyEnd = end;
    return record;
}

int EntityPool::give(mime_msg_pool** pool) {
    *pool = pool_.release();
    return (*pool)->count;
}

MimeMsg& add_uuencoded(EntityPool& pool, uint32_t start, uint32_t end) {
    return pool.add_embedded("x-embedded", nullptr, "x-uuencode", start, end);
}

MimeMsg& add_binhex(EntityPool& pool, uint32_t start, uint32_t end) {
    return pool.add_embedded("application", "mac-binhex40", nullptr, start, end);
}

}  // namespace vel
