// The work of a verb that makes one file out of another.
#ifndef VEL_TOOLS_VERBS_ONE_FILE_H
#define VEL_TOOLS_VERBS_ONE_FILE_H

#include <functional>

#include "tools/io/exit_code.h"
#include "tools/io/transfer.h"
#include "tools/verbs/command_line.h"

namespace vel::command {

// Runs work for the file of the command line, standard input when there is none, towards its --output. What is
// thrown is told as a message, under the file's name.
Exit transfer_file(CommandLine& line, Session& main, const std::function<void(Transfer&)>& work);

}  // namespace vel::command

#endif
