// What a multipart message tells readers that know no MIME.
#ifndef VEL_BUILD_PREAMBLE_H
#define VEL_BUILD_PREAMBLE_H

#include "frame/new_file.h"

namespace vel {

// Writes the empty line that ends the header block, and the preamble. False when a write falls short.
bool write_preamble(NewFile& file);

}  // namespace vel

#endif
