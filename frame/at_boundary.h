// The one door where exceptions stop. Inside the library memory that runs out is std::bad_alloc; an
// exported call runs its body through here, which turns it into the call's failure result.
#ifndef VEL_FRAME_AT_BOUNDARY_H
#define VEL_FRAME_AT_BOUNDARY_H

#include <exception>
#include <utility>

namespace vel {

// Runs body() and returns its result; when it throws, calls out_of_memory() and returns failed.
template <class R, class Report, class Body>
R at_boundary(R failed, Report&& out_of_memory, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::exception&) {
        std::forward<Report>(out_of_memory)();
        return failed;
    }
}

// The same for a call that reports nothing.
template <class R, class Body>
R at_boundary(R failed, Body&& body) noexcept {
    return at_boundary(
        failed, [] {}, std::forward<Body>(body));
}

}  // namespace vel

#endif
