// The same work on each of the files of a command line, on all cores.
#ifndef VEL_TOOLS_VERBS_MANY_FILES_H
#define VEL_TOOLS_VERBS_MANY_FILES_H

#include <functional>
#include <string>

#include "tools/io/exit_code.h"
#include "tools/io/session.h"
#include "tools/verbs/command_line.h"

namespace vel::command {

// The work on one file. It runs on several threads at once, each with a session of its own, and throws
// Failure when it must give the file up.
using FileWork = std::function<Exit(const std::string& file, Session& session)>;

// Runs work for each file of the command line, directories searched when --recursive is given. Whatever
// the threads do, output and messages come in the order of the files. What is thrown for one file is told
// as a message, with --json also as an object, and does not hold up the others; the worst exit code counts.
Exit for_each_file(const CommandLine& line, Session& session, const FileWork& work);

}  // namespace vel::command

#endif
