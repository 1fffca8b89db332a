// The pool of records that a parse builds, freed unless it is handed over.
#ifndef VEL_MIME_ENTITY_POOL_H
#define VEL_MIME_ENTITY_POOL_H

#include <cstdint>
#include <memory>

#include "vel/mime.h"

namespace vel {

class EntityPool {
  public:
    explicit EntityPool(const char* path);

    // Adds a new record; its position is where its header block begins. Throws without memory.
    MimeMsg& add(uint32_t header_start);

    // Adds a record for a file embedded in a body, at [start, end).
    MimeMsg& add_embedded(const char* type, const char* subtype, const char* encoding, uint32_t start, uint32_t end);

    mime_msg_pool& records() { return *pool_; }

    // Hands the pool over. Returns its count.
    int give(mime_msg_pool** pool);

  private:
    struct WithRecords {
        void operator()(mime_msg_pool* pool) const { MimeFreeMessage(&pool); }
    };
    const char* path_;
    std::unique_ptr<mime_msg_pool, WithRecords> pool_;
};

// The types under which embedded files are recorded.
MimeMsg& add_uuencoded(EntityPool& pool, uint32_t start, uint32_t end);
MimeMsg& add_binhex(EntityPool& pool, uint32_t start, uint32_t end);

// Throws std::bad_alloc when an operation on a pool or tree ran out of memory.
void expect_memory(int result);

// The size of an open file.
uint32_t size_of(const VEL_FILE& file);

}  // namespace vel

#endif
