// What the verbs' command lines have in common.
#ifndef VEL_TOOLS_COMMAND_LINE_H
#define VEL_TOOLS_COMMAND_LINE_H

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/exit_code.h"
#include "tools/message.h"
#include "tools/verb.h"

namespace vel::command {

class CommandLine {
  public:
    // The verb's name, what it does, and what stands below the options in its help.
    CommandLine(const std::string& verb, const std::string& description, const std::string& footer);

    CLI::App& app() { return app_; }

    // Reads the arguments; the exit code when nothing is left to do (help was asked for, or wrong usage).
    std::optional<Exit> read(Arguments arguments);

    std::vector<std::string> files;
    bool json = false;
    ParseOptions parse_options;

  private:
    CLI::App app_;
};

// Runs work for each file. A Failure ends the work on one file and is told on standard error; the
// worst exit code counts.
Exit for_each_file(const std::vector<std::string>& files, const std::function<Exit(const std::string&)>& work);

// The paragraph about texts that every help with --json ends in.
extern const char* const kAboutJsonTexts;

}  // namespace vel::command

#endif
