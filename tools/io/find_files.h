// From the names on the command line to the files that are meant.
#ifndef VEL_TOOLS_IO_FIND_FILES_H
#define VEL_TOOLS_IO_FIND_FILES_H

#include <string>
#include <vector>

namespace vel::command {

struct FoundFile {
    std::string name;
    std::string trouble = {};  // not empty: a directory that gives nothing, and why
};

// Takes every name as it is; recursive: puts in the place of a directory what is in it, sorted by the
// bytes of the names, level by level:
//   - of a Maildir (which has the directories cur, new and tmp) the messages in cur and new, and its
//     sub-directories that are Maildirs themselves;
//   - of any other one its files and its sub-directories; of hidden ones only Maildirs.
// Inside directories only regular files count; symbolic links are not followed. A directory in which nothing
// is found is trouble.
std::vector<FoundFile> find_files(const std::vector<std::string>& names, bool recursive);

}  // namespace vel::command

#endif
