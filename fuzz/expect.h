// What a fuzz target holds to be true.
#ifndef VEL_FUZZ_EXPECT_H
#define VEL_FUZZ_EXPECT_H

#include <cstdlib>
#include <string>

inline void expect(bool holds) {
    if (!holds) std::abort();
}

inline void expect_same(const std::string& a, const std::string& b) {
    if (a != b) std::abort();
}

#endif
