#include "mime/boundary_pool.h"

#include "frame/ascii.h"

namespace {

void forget_level(boundary_pool& pool, const boundary_node& node) {
    const auto found = pool.levels.find(vel::ascii::lower(node.text));
    if (found == pool.levels.end()) return;
    found->second.erase(node.level);
    if (found->second.empty()) pool.levels.erase(found);
}

}  // namespace

int AddBoundaryNode(boundary_pool* pool, const char* text, int32_t level) {
    if (!pool || !text || !*text) return -1;
    const auto count = static_cast<int32_t>(pool->items.size());
    const int32_t place = level >= 0 && level < count ? level : count;
    auto node = std::make_unique<boundary_node>(boundary_node{text, place});
    pool->levels[vel::ascii::lower(text)].insert(place);
    if (place == count) {
        pool->items.push_back(std::move(node));
        return 0;
    }
    auto& slot = pool->items[static_cast<std::size_t>(place)];
    if (!vel::ascii::equals_ignoring_case(slot->text, text)) forget_level(*pool, *slot);
    slot = std::move(node);
    return 0;
}

void DelBoundaryNode(boundary_pool* pool, int index) {
    if (!pool || index < 0) return;
    while (pool->items.size() > static_cast<std::size_t>(index)) {
        forget_level(*pool, *pool->items.back());
        pool->items.pop_back();
    }
}

const char* GetBoundaryFromPool(const boundary_pool* pool, int index) {
    if (!pool || index < 0 || static_cast<std::size_t>(index) >= pool->items.size()) return nullptr;
    return pool->items[static_cast<std::size_t>(index)]->text.c_str();
}

void FreeBoundaryPool(boundary_pool* pool) { DelBoundaryNode(pool, 0); }

int GetMimeLevelFromBoundary(int highest, const char* text, const boundary_pool* pool, int closing) {
    if (!pool || !text) return -1;
    const auto found = pool->levels.find(vel::ascii::lower(text));
    if (found == pool->levels.end()) return -1;
    const int32_t level = *found->second.begin();
    if (level > highest) return -1;
    return closing ? level - 1 : level;
}
