// A message as a gateway takes it apart: its records, and every leaf's body as a decoded file.
#ifndef VEL_BENCH_MESSAGE_H
#define VEL_BENCH_MESSAGE_H

#include "vel/mime.h"

namespace vel::bench {

class Message {
  public:
    explicit Message(const char* path) : records_(MimeParseMessage(path, 1, &pool_)) {}
    ~Message() { MimeFreeMessage(&pool_); }
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    int records() const { return records_; }  // -1: refused

    // Writes every leaf's body into a file and removes it again. Returns the number of leaves, -1 when one fails.
    int extract() const {
        int leaves = 0;
        for (int i = 0; i < records_; ++i) {
            MimeMsg* record = MimeGetMsg(pool_, i);
            if (record->boundary) continue;
            char* path = MimeGetBody(record, 0, -1);
            if (!path) return -1;
            MimeFreeFile(path);
            ++leaves;
        }
        return leaves;
    }

  private:
    mime_msg_pool* pool_ = nullptr;
    int records_;
};

}  // namespace vel::bench

#endif
