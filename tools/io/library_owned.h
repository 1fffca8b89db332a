// Owners of what the library hands out.
#ifndef VEL_TOOLS_IO_LIBRARY_OWNED_H
#define VEL_TOOLS_IO_LIBRARY_OWNED_H

#include <cstdlib>
#include <memory>

#include "vel/mime.h"

namespace vel::command {

struct PoolFreed {
    void operator()(mime_msg_pool* pool) const { MimeFreeMessage(&pool); }
};
using Pool = std::unique_ptr<mime_msg_pool, PoolFreed>;

// A temporary file by its path: removed and forgotten in the end.
struct ResultRemoved {
    void operator()(char* path) const { MimeFreeFile(path); }
};
using ResultFile = std::unique_ptr<char, ResultRemoved>;

struct LineFileClosed {
    void operator()(VEL_FILE* file) const { FileClose(file); }
};
using LineFile = std::unique_ptr<VEL_FILE, LineFileClosed>;

// A text that the caller frees.
struct Freed {
    void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Freed>;

// A handle of the descriptor calls; -1 is none.
class Handle {
  public:
    explicit Handle(int handle) : handle_(handle) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() {
        if (handle_ != -1) fileclose(handle_);
    }
    int get() const { return handle_; }

  private:
    int handle_;
};

constexpr int kForReading = 1;
constexpr int kForWriting = 2;
constexpr int kUnbuffered = 0;

// A range of a message file, in bytes; end is the offset behind the last one.
struct Range {
    uint32_t start;
    uint32_t end;
    bool operator==(const Range&) const = default;
};

}  // namespace vel::command

#endif
