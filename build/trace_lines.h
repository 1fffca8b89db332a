// What a message gets in front when it is submitted.
#ifndef VEL_BUILD_TRACE_LINES_H
#define VEL_BUILD_TRACE_LINES_H

#include <string>
#include <string_view>

#include "vel/rfc822.h"

namespace vel {

struct Trace {
    std::string_view short_id;
    std::string_view id_domain;  // right of the "@" of a Message-ID
    const char* date;            // of a message without one; null or empty is now
    const char* receipt_to;      // null: no receipt is asked for
    bool adds_mime_version;
};

// The trace field (RFC 822 section 4.3), and those of the fields MIME-Version, Date, Message-ID that the message does not
// have itself.
std::string lines_of(const Trace& trace, const addr822& header);

}  // namespace vel

#endif
