// The texts of a verb that takes texts: its arguments, or the lines of standard input.
#ifndef VEL_TOOLS_VERBS_TEXTS_H
#define VEL_TOOLS_VERBS_TEXTS_H

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/io/exit_code.h"

namespace vel::command {

// Calls on_line(text) for each line of a file, without its line end. A line is held in memory whole.
// Throws Failure.
void for_each_line(int fd, const std::function<void(std::string_view)>& on_line);

// Runs work for each text; "-" stands for the lines of standard input. The worst exit code counts.
Exit for_each_text(const std::vector<std::string>& texts, const std::function<Exit(std::string_view)>& work);

// A text in quotes, for a message about it; cut when it is long.
std::string excerpt(std::string_view text);

}  // namespace vel::command

#endif
