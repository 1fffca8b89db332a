// The envelope as lines of text, as a message file of the queue may carry it in front.
#ifndef VEL_BUILD_ENVELOPE_LINE_H
#define VEL_BUILD_ENVELOPE_LINE_H

#include <string>

#include "vel/envelope.h"

namespace vel {

// "#F" and "#R", the address, and the parameters of RFC 3461 that are said; without a line end.
std::string line_of(const _envFrom& sender);
std::string line_of(const _envRecip& recipient);

}  // namespace vel

#endif
