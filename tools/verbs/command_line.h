// What the verbs' command lines have in common.
#ifndef VEL_TOOLS_VERBS_COMMAND_LINE_H
#define VEL_TOOLS_VERBS_COMMAND_LINE_H

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tools/io/exit_code.h"
#include "tools/io/session.h"
#include "tools/message/message.h"
#include "tools/verbs/verb.h"

namespace vel::command {

// The arguments of a verb. Which options it shares with others it says itself, group by group, in the
// order in which its help is to list them.
class CommandLine {
  public:
    // The verb's name, what it does, and what stands below the options in its help.
    CommandLine(const std::string& verb, const std::string& description, const std::string& footer);

    // FILE... under another name perhaps, --recursive
    void add_files(const char* name = "FILE", const char* what = "Messages");
    void add_texts();    // TEXT...
    void add_json();     // --json
    void add_nested();   // --no-nested
    void add_verbose();  // --verbose

    // For options of the verb's own.
    CLI::App& app() { return app_; }

    // Reads the arguments; the exit code when nothing is left to do (help was asked for, or wrong usage).
    std::optional<Exit> read(Arguments arguments, Session& session);

    // Says what is wrong with arguments that do not go together.
    Exit misuse(const std::string& text, Session& session) const;

    std::vector<std::string> files;
    bool recursive = false;
    std::vector<std::string> texts;
    bool json = false;
    ParseOptions parse_options;

  private:
    CLI::App app_;
};

// Has an option take a number that is not negative: N; or SIZE, in bytes or with K, M, G for powers of 1024.
CLI::Option* as_number(CLI::Option* option);
CLI::Option* as_size(CLI::Option* option);

// The paragraph about texts that every help with --json ends in.
extern const char* const kAboutJsonTexts;

}  // namespace vel::command

#endif
