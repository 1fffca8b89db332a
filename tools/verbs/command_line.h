// What the verbs' command lines have in common.
#ifndef VEL_TOOLS_VERBS_COMMAND_LINE_H
#define VEL_TOOLS_VERBS_COMMAND_LINE_H

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/io/exit_code.h"
#include "tools/io/session.h"
#include "tools/message/message.h"
#include "tools/verbs/option.h"
#include "tools/verbs/verb.h"

namespace CLI {
class App;
}

namespace vel::command {

// The arguments of a verb. Which options it shares with others it says itself, group by group, in the
// order in which its help is to list them.
class CommandLine {
  public:
    // The verb's name, what it does, and what stands below the options in its help.
    CommandLine(const std::string& verb, const std::string& description, const std::string& footer);
    ~CommandLine();

    // FILE... under another name perhaps, --recursive
    void add_files(const char* name = "FILE", const char* what = "Messages");
    void add_file();     // FILE, --output: one file makes another
    void add_output();   // --output
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

    // Options and arguments of the verb's own. A value is a text, texts or a number, or an optional one; what it is
    // called in the help stands behind the option's name.
    template <class Value>
    Option add_option(const char* name, const char* value_name, Value& value, const char* what);
    template <class Value>
    Option add_argument(const char* name, Value& value, const char* what) {
        return add_option(name, "", value, what);
    }
    Option add_flag(const char* name, bool& value, const char* what);
    Option add_flag(const char* name, const std::function<void()>& when_given, const char* what);

    // N, SIZE and TIME, as option.h has them.
    template <class Value>
    Option add_number(const char* name, Value& value, const char* what) {
        return add_option(name, "N", value, what).number();
    }
    template <class Value>
    Option add_size(const char* name, Value& value, const char* what) {
        return add_option(name, "SIZE", value, what).size();
    }
    template <class Value>
    Option add_time(const char* name, Value& seconds, const char* what) {
        return add_option(name, "TIME", seconds, what).duration();
    }

    // --channel NAME, which may be several. An empty one, as a variable that is not set makes it, must not mean all.
    template <class Value>
    Option add_channel(Value& channel, const char* what) {
        return add_option("--channel", "NAME", channel, what).channel();
    }

    // One that has been added.
    Option option(const char* name);

    // Has an option go with some of the words only.
    void only_with(std::vector<std::string> words, const Option& option);

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
        Option option;
        std::vector<std::string> words;
    };

    void add_word(const char* name, const char* what, std::vector<std::string> words);
    const Limited* misplaced() const;

    std::unique_ptr<CLI::App> app_;
    std::vector<Limited> limited_;
};

// The row that a word of the command line names.
template <class Rows>
const auto& row_named(const Rows& rows, std::string_view name) {
    return *std::find_if(rows.begin(), rows.end(), [&](const auto& row) { return row.name == name; });
}

// The paragraph about texts that every help with --json ends in.
extern const char* const kAboutJsonTexts;

}  // namespace vel::command

#endif
