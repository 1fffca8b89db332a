// A string chain as the library's builders take it.
#ifndef VEL_TOOLS_COMPOSE_TEXT_CHAIN_H
#define VEL_TOOLS_COMPOSE_TEXT_CHAIN_H

#include <string>
#include <vector>

#include "vel/types.h"

namespace vel::command {

class TextChain {
  public:
    explicit TextChain(std::vector<std::string> texts) : texts_(std::move(texts)), nodes_(texts_.size()) {
        for (std::size_t i = 0; i < nodes_.size(); ++i) {
            nodes_[i] = {texts_[i].data(), i + 1 < nodes_.size() ? &nodes_[i + 1] : nullptr};
        }
    }
    TextChain(const TextChain&) = delete;
    TextChain& operator=(const TextChain&) = delete;

    // Null when there are no texts.
    const ms* get() const { return nodes_.empty() ? nullptr : nodes_.data(); }

  private:
    std::vector<std::string> texts_;
    std::vector<ms> nodes_;
};

}  // namespace vel::command

#endif
