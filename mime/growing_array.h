// Arrays of the public records, which carry a count but no capacity: the capacity is the power of
// two at or above the count, so that growing one by one costs time in proportion to the count.
#ifndef VEL_MIME_GROWING_ARRAY_H
#define VEL_MIME_GROWING_ARRAY_H

#include <bit>
#include <cstddef>
#include <cstdlib>

namespace vel {

// Makes room for one more item behind count items. False, with the array as it was, without memory.
template <class T>
bool make_room(T*& items, std::size_t count) {
    if (count != 0 && !std::has_single_bit(count)) return true;
    void* grown = std::realloc(items, (count == 0 ? 1 : 2 * count) * sizeof(T));
    if (!grown) return false;
    items = static_cast<T*>(grown);
    return true;
}

// Gives back what fewer items do not need; frees the array of none.
template <class T>
void shrink(T*& items, std::size_t count) {
    if (count == 0) {
        std::free(items);
        items = nullptr;
    } else if (void* smaller = std::realloc(items, std::bit_ceil(count) * sizeof(T))) {
        items = static_cast<T*>(smaller);
    }
}

}  // namespace vel

#endif
