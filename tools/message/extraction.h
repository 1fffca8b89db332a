// Writing the bodies of one message into a directory.
#ifndef VEL_TOOLS_MESSAGE_EXTRACTION_H
#define VEL_TOOLS_MESSAGE_EXTRACTION_H

#include <optional>
#include <string>
#include <vector>

#include "tools/io/destination.h"
#include "tools/io/exit_code.h"
#include "tools/message/body_file.h"
#include "tools/message/message.h"
#include "tools/text/readable.h"

namespace vel::command {

// One file that was written.
struct Written {
    std::optional<int> part;  // nothing: an uncovered range
    std::string path;
    uint64_t size;
    std::string type;
    std::optional<Readable> name;          // in the message
    std::optional<std::string> true_name;  // in a uuencoded or BinHex body
    bool decoded;
    bool with_header;  // the header block stands before the body
};

struct Extraction {
    std::vector<Written> files;
    int left_out = 0;           // for which the limits left no room
    Exit exit = Exit::success;  // of what could not be written; standard error tells the rest
};

// Writes one part, or every one that has content and all uncovered ranges. What cannot be written is
// complained about and does not hold up the rest. While other files have the turn, bodies are decoded into
// the destination's scratch directory, no more than its limits allow in all; they are placed when the turn
// has come. Throws Failure for a part that is not there.
Extraction extract(const ParsedMessage& message, std::optional<int> part, Form form, Destination& destination,
                   Output& output);

// The pool index of a part that was asked for. Throws Failure when the message has none of that number.
MimeMsg& wanted_part(const ParsedMessage& message, int part);

}  // namespace vel::command

#endif
