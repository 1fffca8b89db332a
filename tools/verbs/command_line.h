// What the verbs' command lines have in common.
#ifndef VEL_TOOLS_VERBS_COMMAND_LINE_H
#define VEL_TOOLS_VERBS_COMMAND_LINE_H

#include <CLI/CLI.hpp>
#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
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
    void add_file();     // FILE, --output: one file makes another
    void add_texts();    // TEXT...
    void add_json();     // --json
    void add_nested();   // --no-nested
    void add_verbose();  // --verbose

    // The first argument, which names a row of a table: the codec of vel encode.
    template <class Rows>
    void add_word(const char* name, const char* what, const Rows& rows) {
        std::vector<std::string> words;
        for (const auto& row : rows) words.emplace_back(row.name);
        add_word(name, what, std::move(words));
    }

    // For options of the verb's own.
    CLI::App& app() { return app_; }

    // Has an option go with some of the words only.
    void only_with(std::vector<std::string> words, CLI::Option* option);

    // Reads the arguments; the exit code when nothing is left to do (help was asked for, or wrong usage).
    std::optional<Exit> read(Arguments arguments, Session& session);

    // Says what is wrong with arguments that do not go together.
    Exit misuse(const std::string& text, Session& session) const;

    std::string word;
    std::vector<std::string> files;
    std::string output = "-";
    bool recursive = false;
    std::vector<std::string> texts;
    bool json = false;
    ParseOptions parse_options;

  private:
    struct Limited {
        CLI::Option* option;
        std::vector<std::string> words;
    };

    void add_word(const char* name, const char* what, std::vector<std::string> words);
    const Limited* misplaced() const;

    CLI::App app_;
    std::vector<Limited> limited_;
};

// The row that a word of the command line names.
template <class Rows>
const auto& row_named(const Rows& rows, std::string_view name) {
    return *std::find_if(rows.begin(), rows.end(), [&](const auto& row) { return row.name == name; });
}

// Has an option take a number that is not negative: N; or SIZE, in bytes or with K, M, G for powers of 1024; or TIME,
// in seconds, from a number with s, m, h or d.
CLI::Option* as_number(CLI::Option* option);
CLI::Option* as_size(CLI::Option* option);
CLI::Option* as_duration(CLI::Option* option);

// Has an option take names of channels, NAME. An empty one, as a variable that is not set makes it, must not mean all.
CLI::Option* as_channel(CLI::Option* option);

// The paragraph about texts that every help with --json ends in.
extern const char* const kAboutJsonTexts;

}  // namespace vel::command

#endif
