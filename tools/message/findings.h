// What is wrong with a message, and where.
#ifndef VEL_TOOLS_MESSAGE_FINDINGS_H
#define VEL_TOOLS_MESSAGE_FINDINGS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/message/message.h"

namespace vel::command {

enum class Severity {
    fault,
    remark,  // nothing is lost by it
};

struct Finding {
    Severity severity;
    Range range;                 // in message.file; its end is its start where only the place is known
    std::string what;            // one plain sentence, without what is in the message
    std::string said = {};       // the library's own text; or empty
    std::string field = {};      // the header field's name; or empty
    std::optional<int> part{};   // its index
    uint64_t line = 0;           // of the range's start, from 1
    Exit exit = Exit::bad_data;  // of a fault: io_error when it is not the message's
};

// Looks at header fields, at what belongs to no entity and at every body, in the order of the file. So
// every body is decoded into the scratch directory, one at a time. Throws Failure.
std::vector<Finding> findings_of(const ParsedMessage& message, const ParseOptions& options, Session& session);

}  // namespace vel::command

#endif
