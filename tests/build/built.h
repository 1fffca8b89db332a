// What the builders' tests share: chains, and what stands in the files that are made.
#ifndef VEL_TESTS_BUILD_BUILT_H
#define VEL_TESTS_BUILD_BUILT_H

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/fixture.h"
#include "vel/build.h"

namespace vel::test {

// A chain of texts; null for none.
class Chain {
  public:
    explicit Chain(std::vector<std::string> texts) : texts_(std::move(texts)), nodes_(texts_.size()) {
        for (std::size_t i = 0; i < nodes_.size(); ++i) {
            nodes_[i] = {texts_[i].data(), i + 1 < nodes_.size() ? &nodes_[i + 1] : nullptr};
        }
    }
    // Of "a|b"; null for a null text.
    explicit Chain(const char* texts) : Chain(texts ? split(texts) : std::vector<std::string>()) {}
    operator ms*() { return nodes_.empty() ? nullptr : nodes_.data(); }

  private:
    std::vector<std::string> texts_;
    std::vector<ms> nodes_;
};

class BuildTest : public VelTest {
  protected:
    // What stands in a file that a builder has made, which goes; "(null)" when it made none, and left none.
    std::string taken(char* path) {
        std::string text = "(null)";
        if (path) {
            text = content(path);
            std::remove(path);
            std::free(path);
        }
        EXPECT_THAT(left_behind("MIME"), testing::IsEmpty());
        return text;
    }
};

}  // namespace vel::test

#endif
