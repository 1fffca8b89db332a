// The verbs of the command. Each has a file of its own and a row in the table.
#ifndef VEL_TOOLS_VERB_H
#define VEL_TOOLS_VERB_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/exit_code.h"
#include "tools/message.h"

namespace vel::command {

using Arguments = std::vector<std::string>;  // what stands behind the verb

struct Verb {
    std::string_view name;
    std::string_view summary;
    Exit (*run)(Arguments arguments, Session& session);
};

std::span<const Verb> verbs();

Exit run_parse(Arguments arguments, Session& session);
Exit run_extract(Arguments arguments, Session& session);

// Runs what the arguments, without the program's name, ask for.
Exit run_command(Arguments arguments, Session& session);

}  // namespace vel::command

#endif
