// Building string chains: a chain that knows its end, so that appending costs the same at any length.
#ifndef VEL_FRAME_CHAIN_H
#define VEL_FRAME_CHAIN_H

#include "frame/owned.h"
#include "vel/frame.h"

namespace vel {

// Appends to a chain that a record owns. The record's head pointer must outlive this and must not be
// changed by others meanwhile.
class ChainTail {
  public:
    explicit ChainTail(ms*& head) : end_(&head) {
        while (*end_) end_ = &(*end_)->next;
    }
    void append(COwned<char> text) {
        ms* node = make_zeroed<ms>().release();
        node->text = text.release();
        *end_ = node;
        end_ = &node->next;
    }

  private:
    ms** end_;
};

// Releases a chain that a record owns.
inline void clear_chain(ms*& chain) {
    freeStringChain(chain);
    chain = nullptr;
}

}  // namespace vel

#endif
