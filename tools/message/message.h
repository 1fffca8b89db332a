// One message of the command line, parsed as well as it can be.
#ifndef VEL_TOOLS_MESSAGE_MESSAGE_H
#define VEL_TOOLS_MESSAGE_MESSAGE_H

#include <string>
#include <vector>

#include "tools/io/exit_code.h"
#include "tools/io/input.h"
#include "tools/io/journal.h"
#include "tools/io/library_owned.h"
#include "tools/io/session.h"
#include "tools/message/repair.h"
#include "tools/message/tree.h"

namespace vel::command {

// How a message that the library refuses was read in the end.
enum class Fallback {
    none,
    lenient,   // with the tolerant parameter grammars
    repaired,  // a copy without the refused header fields
    flat,      // as a message that is not MIME
};

// Null for none.
const char* name_of(Fallback fallback);

struct ParsedMessage {
    std::string name;  // as given
    std::string file;  // the file or the CR LF copy that the first attempt was made at
    Input input;       // offsets are those of input.path
    Pool pool;
    Tree tree;
    bool mime;
    Fallback fallback;
    std::vector<LogLine> refusal;       // of the first attempt when it failed
    std::vector<LogLine> messages;      // of the one that succeeded
    std::vector<RemovedField> removed;  // by the repair
    RemovedRanges removed_ranges;       // between file and input.path
    std::vector<Range> uncovered;

    MimeMsg& record(int index) const { return *pool->items[index]; }

    // That of a verb which reads the message: the library may have refused it.
    Exit exit() const { return fallback == Fallback::none ? Exit::success : Exit::bad_data; }
};

struct ParseOptions {
    bool nested = true;       // look into enclosed messages
    int level = kErrorLevel;  // log lines up to this level are shown
};

// Opens and parses a message. Throws Failure when nothing can be read.
ParsedMessage read_message(const std::string& name, const ParseOptions& options, Session& session);

// What was done about a message that the library refuses.
std::string remedy_of(const ParsedMessage& message);

// The same as read_message, and complains about what is wrong with it and says what was done about it.
ParsedMessage parse_message(const std::string& name, const ParseOptions& options, Session& session);

}  // namespace vel::command

#endif
