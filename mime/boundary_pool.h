// The delimiters of the open nesting levels (RFC 2046 section 5.1.1).
#ifndef VEL_MIME_BOUNDARY_POOL_H
#define VEL_MIME_BOUNDARY_POOL_H

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

struct boundary_node {
    std::string text;
    int32_t level;
};

// Index i holds the delimiter of level i; what lies above the current level is left over from levels
// that were closed. Beside the nodes the levels are kept by text, so that a line finds its level
// without looking at each of thousands.
struct boundary_pool {
    std::vector<std::unique_ptr<boundary_node>> items;
    std::map<std::string, std::set<int32_t>> levels;  // by delimiter in lower case
};

// Puts a delimiter at a level: below the count it replaces the one there, else it is appended.
// Returns 0; -1 for an empty text. Without memory it throws std::bad_alloc.
int AddBoundaryNode(boundary_pool* pool, const char* text, int32_t level);

// Frees the nodes from an index on.
void DelBoundaryNode(boundary_pool* pool, int index);

// The delimiter at an index, or null.
const char* GetBoundaryFromPool(const boundary_pool* pool, int index);

void FreeBoundaryPool(boundary_pool* pool);

// The lowest level, up to the highest one given, whose delimiter is the whole text, letter case
// aside; with closing set the level around it. -1 when there is none.
int GetMimeLevelFromBoundary(int highest, const char* text, const boundary_pool* pool, int closing);

#endif
