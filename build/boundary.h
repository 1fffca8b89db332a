// The text that parts the parts of a multipart message.
#ifndef VEL_BUILD_BOUNDARY_H
#define VEL_BUILD_BOUNDARY_H

#include <string>

namespace vel {

// Kept: one thread gets the same boundary again within a second.
std::string make_boundary();

}  // namespace vel

#endif
