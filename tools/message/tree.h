// The tree of a parsed message by pool indexes.
#ifndef VEL_TOOLS_MESSAGE_TREE_H
#define VEL_TOOLS_MESSAGE_TREE_H

#include <span>
#include <vector>

#include "vel/mime.h"

namespace vel::command {

constexpr int kNoParent = -1;

// A record that no other one lists is a root: the message itself, every record of a flat message. The
// library lists 65,535 children of a container; those behind them are given to it here.
class Tree {
  public:
    explicit Tree(const mime_msg_pool& pool);

    int count() const { return static_cast<int>(parents_.size()); }
    int parent(int index) const { return parents_[at(index)]; }
    int depth(int index) const { return depths_[at(index)]; }
    std::span<const int> children(int index) const;

    // Every record in the order in which the tree is drawn: a parent before its children.
    std::vector<int> drawing_order() const;

    int leaves() const;  // records without children
    int containers() const { return count() - leaves(); }

  private:
    static std::size_t at(int index) { return static_cast<std::size_t>(index); }
    void adopt(const mime_msg_pool& pool);
    void list_children();

    std::vector<int> parents_;
    std::vector<int> depths_;
    std::vector<int> children_;        // of all records, one after the other
    std::vector<std::size_t> starts_;  // where each record's children begin in it, and its end
};

}  // namespace vel::command

#endif
