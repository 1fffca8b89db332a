// The process-wide pool of files opened by the descriptor calls.
//
// The list of nodes is walked without a lock: nodes are never unlinked before the pool's end. Beside
// it stands an index by descriptor, so that a call costs the same with one or 10,000 open files.
#ifndef VEL_FRAME_FILE_POOL_H
#define VEL_FRAME_FILE_POOL_H

#include <atomic>
#include <cstdint>

#include "vel/frame.h"

struct vel_file_node {
    VEL_FILE* file;
    std::atomic<int32_t> used;  // 1: holds an open file; 0: free for reuse
    std::atomic<vel_file_node*> next;
};

struct file_pool {
    std::atomic<vel_file_node*> head;
    std::atomic<int32_t> count;  // nodes ever linked
};

extern file_pool* thread_file_pool;  // process-wide, in spite of its name; null until InitLineIO
extern CRITICAL_SECTION filecs;      // guards linking into the pool
extern CRITICAL_SECTION filecs2;     // guards the test and release of one node

// Links a file into the pool. Returns 0; -1 for a null pool or without memory.
int AddToFilePool(file_pool* pool, VEL_FILE* file);

// Returns the open file of a descriptor, or null.
VEL_FILE* GetFromFilePool(file_pool* pool, long fd);

// Destroys the open file of a descriptor, closing it. Returns 0, found or not; -1 for a null pool.
int DelFromFilePool(file_pool* pool, long fd);

// Tells whether a node holds the open file of a descriptor; with release set such a file is
// destroyed and the node is free.
int f(vel_file_node* node, long fd, int release);

namespace vel {

// The record behind a handle of the descriptor calls, or null.
inline VEL_FILE* pooled_file(int handle) { return GetFromFilePool(thread_file_pool, handle); }

}  // namespace vel

#endif
