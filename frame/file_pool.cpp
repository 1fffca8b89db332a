#include "frame/file_pool.h"

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "frame/at_boundary.h"
#include "frame/critical_section.h"
#include "frame/line_file.h"

static_assert(sizeof(void*) != 4 || (sizeof(vel_file_node) == 12 && sizeof(file_pool) == 8));

file_pool* thread_file_pool = nullptr;
CRITICAL_SECTION filecs;
CRITICAL_SECTION filecs2;

namespace vel {
namespace {

// From descriptor to node: chunks that appear as they are needed and stay until the pool ends, so
// that a lookup takes no lock. Descriptors past the last chunk are found by walking the list.
class DescriptorIndex {
  public:
    ~DescriptorIndex() {
        for (auto& chunk : chunks_) delete chunk.load(std::memory_order_relaxed);
    }

    bool covers(long fd) const { return fd >= 0 && static_cast<std::size_t>(fd) < kChunks * kChunkSize; }

    vel_file_node* find(long fd) const {
        const Chunk* chunk = chunks_[chunk_of(fd)].load(std::memory_order_acquire);
        return chunk ? (*chunk)[place_in(fd)].load(std::memory_order_acquire) : nullptr;
    }

    // Called under filecs.
    void set(long fd, vel_file_node* node) {
        auto& chunk = chunks_[chunk_of(fd)];
        if (!chunk.load(std::memory_order_relaxed)) chunk.store(new Chunk{}, std::memory_order_release);
        (*chunk.load(std::memory_order_relaxed))[place_in(fd)].store(node, std::memory_order_release);
    }

    // Forgets a node unless its descriptor names another by now.
    void clear(long fd, vel_file_node* node) {
        if (Chunk* chunk = chunks_[chunk_of(fd)].load(std::memory_order_acquire)) {
            (*chunk)[place_in(fd)].compare_exchange_strong(node, nullptr);
        }
    }

  private:
    static constexpr std::size_t kChunkSize = 1024;
    static constexpr std::size_t kChunks = 1024;  // a million descriptors, the kernel's usual limit
    using Chunk = std::array<std::atomic<vel_file_node*>, kChunkSize>;

    static std::size_t chunk_of(long fd) { return static_cast<std::size_t>(fd) / kChunkSize; }
    static std::size_t place_in(long fd) { return static_cast<std::size_t>(fd) % kChunkSize; }

    std::array<std::atomic<Chunk*>, kChunks> chunks_{};
};

// A node that knows its place in the list.
struct PlacedNode : vel_file_node {
    explicit PlacedNode(std::size_t at) : vel_file_node{}, place(at) {}
    const std::size_t place;
};

// The pool with what stands beside it. Nodes and the free places are guarded by filecs.
struct IndexedPool : file_pool {
    IndexedPool() : file_pool{} {}

    std::vector<std::unique_ptr<PlacedNode>> nodes;
    std::vector<std::size_t> free;  // a heap, the first place on top; it has room for all nodes
    DescriptorIndex index;
};

IndexedPool& indexed(file_pool* pool) { return static_cast<IndexedPool&>(*pool); }

void offer(IndexedPool& pool, std::size_t place) {
    pool.free.push_back(place);
    std::push_heap(pool.free.begin(), pool.free.end(), std::greater<>());
}

void take_first(IndexedPool& pool) {
    std::pop_heap(pool.free.begin(), pool.free.end(), std::greater<>());
    pool.free.pop_back();
}

void append_node(IndexedPool& pool) {
    const std::size_t place = pool.nodes.size();
    pool.free.reserve(place + 1);
    pool.nodes.push_back(std::make_unique<PlacedNode>(place));
    offer(pool, place);
    vel_file_node* node = pool.nodes.back().get();
    (place == 0 ? pool.head : pool.nodes[place - 1]->next).store(node, std::memory_order_release);
    pool.count.fetch_add(1, std::memory_order_release);
}

void link_file(IndexedPool& pool, VEL_FILE* file) {
    const CriticalSectionHeld held(filecs);
    if (pool.free.empty()) append_node(pool);
    PlacedNode* node = pool.nodes[pool.free.front()].get();
    node->file = file;
    if (pool.index.covers(file->fd)) pool.index.set(file->fd, node);
    take_first(pool);
    node->used.store(1, std::memory_order_release);
}

vel_file_node* walk_to(const file_pool& pool, long fd) {
    vel_file_node* node = pool.head.load(std::memory_order_acquire);
    for (int32_t left = pool.count.load(std::memory_order_acquire); left > 0 && node; --left) {
        if (f(node, fd, 0)) return node;
        node = node->next.load(std::memory_order_acquire);
    }
    return nullptr;
}

vel_file_node* find_node(const IndexedPool& pool, long fd) {
    return pool.index.covers(fd) ? pool.index.find(fd) : walk_to(pool, fd);
}

void offer_again(IndexedPool& pool, const vel_file_node* node) {
    const CriticalSectionHeld held(filecs);
    offer(pool, static_cast<const PlacedNode*>(node)->place);
}

}  // namespace
}  // namespace vel

int AddToFilePool(file_pool* pool, VEL_FILE* file) {
    if (!pool || !file) return -1;
    return vel::at_boundary(-1, [&] {
        vel::link_file(vel::indexed(pool), file);
        return 0;
    });
}

VEL_FILE* GetFromFilePool(file_pool* pool, long fd) {
    if (!pool) return nullptr;
    vel_file_node* node = vel::find_node(vel::indexed(pool), fd);
    return node && f(node, fd, 0) ? node->file : nullptr;
}

int DelFromFilePool(file_pool* pool, long fd) {
    if (!pool) return -1;
    vel::IndexedPool& all = vel::indexed(pool);
    vel_file_node* node = vel::find_node(all, fd);
    if (!node) return 0;
    // The index forgets the descriptor before it is closed: from then on another thread may get it.
    if (all.index.covers(fd)) all.index.clear(fd, node);
    if (f(node, fd, 1)) vel::offer_again(all, node);
    return 0;
}

int f(vel_file_node* node, long fd, int release) {
    const vel::CriticalSectionHeld held(filecs2);
    if (!node->used.load(std::memory_order_acquire) || node->file->fd != fd) return 0;
    if (release) {
        DelVEL_FILE(&node->file);
        node->used.store(0, std::memory_order_release);
    }
    return 1;
}

extern "C" {

int InitLineIO(void) {
    if (thread_file_pool) return 0;
    return vel::at_boundary(-1, [] {
        auto pool = std::make_unique<vel::IndexedPool>();
        InitializeCriticalSection(&filecs);
        InitializeCriticalSection(&filecs2);
        thread_file_pool = pool.release();
        return 0;
    });
}

void TerminateLineIO(void) {
    if (!thread_file_pool) return;
    const std::unique_ptr<vel::IndexedPool> pool(&vel::indexed(thread_file_pool));
    thread_file_pool = nullptr;
    for (const auto& node : pool->nodes) {
        if (node->used) DelVEL_FILE(&node->file);
    }
    DeleteCriticalSection(&filecs);
    DeleteCriticalSection(&filecs2);
}

}  // extern "C"
