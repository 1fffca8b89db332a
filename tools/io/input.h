// From a name on the command line to a file that the library can parse.
#ifndef VEL_TOOLS_IO_INPUT_H
#define VEL_TOOLS_IO_INPUT_H

#include <string>
#include <vector>

#include "tools/io/scratch.h"
#include "tools/io/session.h"

namespace vel::command {

struct Input {
    std::string path;                 // what is parsed: the file itself or a private copy
    bool normalized = false;          // path is a copy in which every line ends in CR LF
    std::vector<PrivateFile> copies;  // removed with this
};

// Opens a message by its name, "-" being standard input, which is read in the file's turn. Standard input and
// what is no regular file are copied; so is a message whose header lines end in bare LF, with CR LF. Throws
// Failure: no_input for what cannot be read, bad_data for a message of 2 GiB or more.
Input open_input(const std::string& name, Session& session);

// Opens a file of any kind likewise, as it stands; about_directory is what is said when it is one. Its path is
// that of a regular file below 2 GiB.
Input open_as_it_stands(const std::string& name, Session& session, const char* about_directory = "is a directory");

// Whether a line of the header block, its blank line included, ends in bare LF.
bool has_bare_line_ends(const std::string& path);

}  // namespace vel::command

#endif
