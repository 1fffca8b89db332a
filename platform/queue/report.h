// What the queue writes to the log, and the one door where its exceptions stop.
#ifndef VEL_PLATFORM_QUEUE_REPORT_H
#define VEL_PLATFORM_QUEUE_REPORT_H

#include <array>
#include <exception>
#include <string>
#include <utility>

#include "platform/failure.h"

namespace vel {

using QueueError = Failure;

// Nor could it be found out: what belongs to it must stay until it can. Needs no memory.
class CommitInDoubt : public std::exception {
  public:
    const char* what() const noexcept override { return "nobody can tell yet whether the entry is in the queue"; }
};

// The name that the queue's lines carry: the module of the last MQInit, cut as libvel cuts it.
using Module = std::array<char, 32>;
void set_module(const char* module);
Module module();

// "CALL: reason." at level 1. Never fails, and keeps errno.
void report_failure(const char* call, const char* reason) noexcept;
// A line of accounting, level 3.
void account(const std::string& text);

// Runs body() and returns its result; when it throws, reports why and returns failed.
template <class R, class Body>
R guarded(const char* call, R failed, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::bad_alloc&) {
        report_failure(call, "out of memory");
    } catch (const std::exception& error) {
        report_failure(call, error.what());
    }
    return failed;
}

}  // namespace vel

#endif
