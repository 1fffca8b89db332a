#include "tools/message/tree.h"

#include <limits>
#include <unordered_map>

#include "tools/message/entity.h"

namespace vel::command {
namespace {

constexpr int32_t kChild = 2;  // MimeMsg.nodeKind

bool is_full(const MimeMsg& record) {
    return record.numChildren == std::numeric_limits<decltype(record.numChildren)>::max();
}

}  // namespace

Tree::Tree(const mime_msg_pool& pool)
    : parents_(at(pool.count), kNoParent), depths_(at(pool.count), 0), starts_(at(pool.count) + 1, 0) {
    std::unordered_map<const MimeMsg*, int> index_of;
    for (int i = 0; i < count(); ++i) index_of.emplace(pool.items[i], i);
    for (int i = 0; i < count(); ++i) {
        const MimeMsg& record = *pool.items[i];
        for (const MimeMsg* child : std::span(record.children, record.numChildren))
            parents_[at(index_of.at(child))] = i;
    }
    adopt(pool);
    // A parent stands before its children in the pool.
    for (int i = 0; i < count(); ++i) depths_[at(i)] = parent(i) == kNoParent ? 0 : depth(parent(i)) + 1;
    list_children();
}

// Gives the children that a full container does not list to the innermost such container around them, the
// outermost one when no end tells.
void Tree::adopt(const mime_msg_pool& pool) {
    std::vector<int> full;
    for (int i = 0; i < count(); ++i) {
        const MimeMsg& record = *pool.items[i];
        while (full.size() > 1 && record.headerStart >= end_of_body(*pool.items[full.back()])) full.pop_back();
        if (parent(i) == kNoParent && record.nodeKind == kChild && !full.empty()) parents_[at(i)] = full.back();
        if (is_full(record)) full.push_back(i);
    }
}

void Tree::list_children() {
    for (const int parent : parents_) {
        if (parent != kNoParent) ++starts_[at(parent) + 1];
    }
    for (std::size_t i = 1; i < starts_.size(); ++i) starts_[i] += starts_[i - 1];
    children_.resize(starts_.back());
    std::vector<std::size_t> next(starts_.begin(), starts_.end() - 1);
    for (int i = 0; i < count(); ++i) {
        if (parent(i) != kNoParent) children_[next[at(parent(i))]++] = i;
    }
}

std::span<const int> Tree::children(int index) const {
    return std::span(children_).subspan(starts_[at(index)], starts_[at(index) + 1] - starts_[at(index)]);
}

std::vector<int> Tree::drawing_order() const {
    std::vector<int> order;
    std::vector<int> ahead;
    for (int i = count() - 1; i >= 0; --i) {
        if (parent(i) == kNoParent) ahead.push_back(i);
    }
    while (!ahead.empty()) {
        const int index = ahead.back();
        ahead.pop_back();
        order.push_back(index);
        const auto list = children(index);
        ahead.insert(ahead.end(), list.rbegin(), list.rend());
    }
    return order;
}

int Tree::leaves() const {
    int result = 0;
    for (int i = 0; i < count(); ++i) result += children(i).empty();
    return result;
}

}  // namespace vel::command
