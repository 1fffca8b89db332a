// What the builders' tests share: values, chains, and what stands in the files that are made.
#ifndef VEL_TESTS_BUILD_BUILT_H
#define VEL_TESTS_BUILD_BUILT_H

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/fixture.h"
#include "tests/support/memory.h"
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

// What a builder is called with; chains as "a|b".
struct Values {
    const char* from = nullptr;
    const char* to = nullptr;
    const char* subject = nullptr;
    const char* cc = nullptr;
    const char* bcc = nullptr;
    const char* type = nullptr;
    const char* subtype = nullptr;
    const char* parameters = nullptr;
    const char* encoding = nullptr;
    const char* id = nullptr;
    const char* description = nullptr;
    const char* extra = nullptr;
    int flags = 0;
};

inline std::string replaced(std::string text, std::string_view old, std::string_view by) {
    for (std::size_t at = 0; (at = text.find(old, at)) != std::string::npos; at += by.size()) {
        text.replace(at, old.size(), by);
    }
    return text;
}

// What stands before the first part.
constexpr const char* kPreamble =
    "\nThis is a Mime message, which your current mail reader\n"
    "may not understand. Parts of the message will appear as\n"
    "text. To process the remainder, you will need to use a Mime\n"
    "compatible mail reader. Contact your vendor for details.\n";

// The first boundary in a message; empty when there is none.
inline std::string boundary_of(const std::string& message) {
    constexpr std::size_t kLength = sizeof "VEL.Boundary.0123456789ABCDEF" - 1;
    const std::size_t start = message.find("VEL.Boundary.");
    return start == std::string::npos ? "" : message.substr(start, kLength);
}

class BuildTest : public VelTest {
  protected:
    BuildTest() {
        set("Connection", "GatewayHostName", "gw");
        set("Connection", "GatewayDomain", "corp");
    }

    // Builds a single part of a body file, by the shorter call where no Bcc is wanted.
    char* build(const Values& v, const std::string& body) {
        Chain to(v.to), cc(v.cc), bcc(v.bcc), parameters(v.parameters), extra(v.extra);
        const Starved starved(granted_, refused_);
        if (bcc) {
            return MimeBuildMessageWithBCC(v.from, to, v.subject, cc, bcc, v.type, v.subtype, parameters, v.encoding,
                                           v.id, v.description, body.c_str(), extra, v.flags);
        }
        return MimeBuildMessage(v.from, to, v.subject, cc, v.type, v.subtype, parameters, v.encoding, v.id,
                                v.description, body.c_str(), extra, v.flags);
    }

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

    // Runs a test of a call again and again, granting it one request for memory more each time, up to what it takes.
    // Before that it runs with all it wants: what the process keeps from then on is not asked for again.
    template <class Test>
    void with_little_memory(std::size_t refused, Test test) {
        test();
        refused_ = refused;
        for (granted_ = 0, memory.has_failed = true; memory.has_failed; ++granted_) test();
        EXPECT_GT(granted_, 10u);
        granted_ = kEveryRequest;
    }

    template <class Built>
    void expect_whole_or_nothing(Built built) {
        const std::string whole = built();
        with_little_memory(kEveryRequest, [&] { EXPECT_THAT(built(), testing::AnyOf("(null)", whole)) << granted_; });
        take_log();
    }

    // Requests for memory that a builder's call gets, and those behind them that it does not get.
    std::size_t granted_ = kEveryRequest;
    std::size_t refused_ = kEveryRequest;
};

}  // namespace vel::test

#endif
