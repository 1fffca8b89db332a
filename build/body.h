// The body of an entity, from the caller's file.
#ifndef VEL_BUILD_BODY_H
#define VEL_BUILD_BODY_H

#include "build/content.h"

namespace vel {

// Writes a file's content in the encoding that is named. False when the file cannot be opened, for an encoding
// that is not known, and when anything fails.
//   out  a handle of the pool that holds nothing back
bool write_body(const Content& content, const char* path, int out);

}  // namespace vel

#endif
