// The first lines of every message: whom it is from and for, and what it is about.
#ifndef VEL_BUILD_HEADING_H
#define VEL_BUILD_HEADING_H

#include <string>

#include "vel/types.h"

namespace vel {

// Texts and chains of the caller. What is null has no line, nor has an empty text; empty entries of a chain are
// passed over.
struct Heading {
    const char* from = nullptr;
    const ms* to = nullptr;
    const char* subject = nullptr;
    const ms* cc = nullptr;
    const ms* bcc = nullptr;
    const ms* extra = nullptr;  // whole lines, their line ends added where they are missing
};

// The header lines, in a fixed order, each with its line end.
std::string lines_of(const Heading& heading);

}  // namespace vel

#endif
