#include "tests/support/memory.h"

#include <cstdlib>
#include <new>

// The C heap, which the linker's --wrap puts behind these names.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
}

namespace {

bool is_granted() {
    using vel::test::memory;
    if (memory.granted > 0) {
        memory.granted -= memory.granted != vel::test::kEveryRequest;
        return true;
    }
    if (memory.refused == 0) return true;
    memory.refused -= memory.refused != vel::test::kEveryRequest;
    memory.has_failed = true;
    return false;
}

void* allocate(std::size_t size) { return is_granted() ? __real_malloc(size ? size : 1) : nullptr; }

}  // namespace

void* __wrap_malloc(std::size_t size) { return allocate(size); }
void* __wrap_calloc(std::size_t count, std::size_t size) { return is_granted() ? __real_calloc(count, size) : nullptr; }

// Serve the whole program, the libraries under test too. Releasing is kept out of line: GCC 12, where
// it sees only one half of a pair, takes it for a mismatch.
void* operator new(std::size_t size) {
    if (void* memory = allocate(size)) return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
