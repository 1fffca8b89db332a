// A queue that writes down what it is told, in the place of the real one.
#ifndef VEL_TESTS_BUILD_QUEUE_DOUBLE_H
#define VEL_TESTS_BUILD_QUEUE_DOUBLE_H

#include <string>
#include <vector>

#include "vel/platform/queue.h"

struct MQContext {
    std::string base;
    std::string path;
};

namespace vel::test {

struct Queue {
    std::string base;   // of every entry
    std::string fails;  // the call that does
    std::string calls;
    std::string envelope;
    std::vector<std::string> messages;  // of the entries that were committed
    std::vector<std::string> envelopes;
    MQContext context;

    bool call(const std::string& name) {
        calls += name + " ";
        return name != fails;
    }
};
inline Queue* queue = nullptr;  // the running test's

}  // namespace vel::test

#endif
