#include "tools/command_line.h"

#include <unistd.h>

#include <algorithm>

#include "tools/output.h"

namespace vel::command {

const char* const kAboutJsonTexts =
    "Texts in JSON: a message's bytes that are not UTF-8 (0x80 to 0xFF) appear as the characters U+F780 to\n"
    "U+F7FF. To get the bytes back, take each of these characters as the byte (code - 0xF700) and every other\n"
    "character as its UTF-8.";

CommandLine::CommandLine(const std::string& verb, const std::string& description, const std::string& footer)
    : app_(description, "vel " + verb) {
    app_.footer(footer);
    app_.add_option("FILE", files, "Messages; \"-\" is standard input")->required()->type_name("");
    app_.add_flag("--json", json, "One object a file, on one line");
    app_.add_flag_callback(
        "--no-nested", [this] { parse_options.nested = false; }, "Leave enclosed messages (message/rfc822) whole");
    app_.add_flag_callback(
        "-v,--verbose", [this] { parse_options.level = kEveryLevel; },
        "Show all that the library says, not only what is wrong");
}

std::optional<Exit> CommandLine::read(Arguments arguments) {
    for (std::string& argument : arguments) {
        // The option parser would take a name that stands in brackets for a list.
        if (argument.starts_with('[') && argument.ends_with(']')) argument.insert(0, "./");
    }
    std::reverse(arguments.begin(), arguments.end());  // the order that it wants
    try {
        app_.parse(std::move(arguments));
        return std::nullopt;
    } catch (const CLI::CallForHelp&) {
        Output output(STDOUT_FILENO);
        output.write(app_.help());
        output.flush();
        return Exit::success;
    } catch (const CLI::ParseError& error) {
        complain({}, error.what());
        complain({}, app_.get_name() + " --help tells more");
        return Exit::usage;
    }
}

Exit for_each_file(const std::vector<std::string>& files, const std::function<Exit(const std::string&)>& work) {
    Exit worst = Exit::success;
    for (const std::string& file : files) {
        try {
            worst = worse(worst, work(file));
        } catch (const Failure& failure) {
            complain(file, failure.what());
            worst = worse(worst, failure.exit());
        }
    }
    return worst;
}

}  // namespace vel::command
