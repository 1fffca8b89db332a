// The message that a delivery report is about, as far as its header is returned.
#ifndef VEL_TOOLS_REPORT_RETURNED_MESSAGE_H
#define VEL_TOOLS_REPORT_RETURNED_MESSAGE_H

#include <cstdint>
#include <optional>
#include <string>

#include "tools/io/lines.h"
#include "tools/text/readable.h"

namespace vel::command {

struct ReturnedMessage {
    std::string message_id;
    std::optional<Readable> subject;
    std::string addressees;  // as its header has them

    bool is_told() const { return !message_id.empty() || subject; }
};

// Reads the header block that stands at an offset. A paragraph may stand before it: what announces it, or the fields of
// its part. Throws Failure.
ReturnedMessage read_returned(LineReader& lines, uint32_t start);

}  // namespace vel::command

#endif
