#include "tools/message/enclosure.h"

#include <algorithm>

#include "tools/message/entity.h"

namespace vel::command {

std::vector<Enclosure> enclosures_of(const ParsedMessage& message) {
    std::vector<Enclosure> all(1);
    std::vector<std::size_t> inner(static_cast<std::size_t>(message.tree.count()), 0);  // the one its children are in
    for (const int index : message.tree.drawing_order()) {
        const int parent = message.tree.parent(index);
        const std::size_t own = parent == kNoParent ? 0 : inner[static_cast<std::size_t>(parent)];
        all[own].parts.push_back(index);
        inner[static_cast<std::size_t>(index)] = own;
        if (!is_message(message.record(index)) || message.tree.children(index).empty()) continue;
        inner[static_cast<std::size_t>(index)] = all.size();
        all.push_back({all[own].depth + 1, {}});
    }
    std::stable_sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.depth < b.depth; });
    std::erase_if(all, [](const Enclosure& one) { return one.parts.empty(); });
    return all;
}

}  // namespace vel::command
