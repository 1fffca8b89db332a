// The envelope as lines of text, as a message file of the queue may carry it in front.
#ifndef VEL_BUILD_ENVELOPE_LINE_H
#define VEL_BUILD_ENVELOPE_LINE_H

#include <string>
#include <string_view>

#include "frame/ascii.h"
#include "vel/envelope.h"

namespace vel {

// "#F" and "#R", the address, and the parameters of RFC 3461 that are said; without a line end.
std::string line_of(const _envFrom& sender);
std::string line_of(const _envRecip& recipient);

// Whether a line of a message file is one of the queue's: "#F", "#R" or "#D", in any case.
inline bool is_envelope_line(std::string_view line) {
    constexpr std::string_view kKinds = "FRD";
    return line.size() >= 2 && line[0] == '#' && kKinds.find(ascii::to_upper(line[1])) != kKinds.npos;
}

}  // namespace vel

#endif
