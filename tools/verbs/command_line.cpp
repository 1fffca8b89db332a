#include "tools/verbs/command_line.h"

#include <CLI/CLI.hpp>

namespace vel::command {
namespace {

// The option parser takes a value in brackets for a list, unless something stands before them.
constexpr char kGuard = '\x01';

// Wherever in an argument its value begins, "-oVALUE" or "--output=VALUE".
void guard(std::string& argument) {
    std::string guarded;
    for (const char c : argument) {
        if (c == '[' || c == kGuard) guarded += kGuard;
        guarded += c;
    }
    if (argument.starts_with("--") && argument.ends_with('=')) guarded += kGuard;  // it would take the next argument
    argument = std::move(guarded);
}

// Every second one of a run is the argument's own.
std::string unguarded(const std::string& value) {
    std::string text;
    bool guards = false;
    for (const char c : value) {
        guards = c == kGuard && !guards;
        if (!guards) text += c;
    }
    return text;
}

}  // namespace

const char* const kAboutJsonTexts =
    "Texts in JSON: a message's bytes that are not UTF-8 (0x80 to 0xFF) appear as the characters U+F780 to\n"
    "U+F7FF. To get the bytes back, take each of these characters as the byte (code - 0xF700) and every other\n"
    "character as its UTF-8.";

CommandLine::CommandLine(const std::string& verb, const std::string& description, const std::string& footer)
    : app_(std::make_unique<CLI::App>(description, "vel " + verb)) {
    app_->footer(footer);
}

CommandLine::~CommandLine() = default;

template <class Value>
Option CommandLine::add_option(const char* name, const char* value_name, Value& value, const char* what) {
    return Option(app_->add_option(name, value, what)->type_name(value_name));
}

template Option CommandLine::add_option(const char*, const char*, std::string&, const char*);
template Option CommandLine::add_option(const char*, const char*, std::optional<std::string>&, const char*);
template Option CommandLine::add_option(const char*, const char*, std::vector<std::string>&, const char*);
template Option CommandLine::add_option(const char*, const char*, int&, const char*);
template Option CommandLine::add_option(const char*, const char*, std::optional<int>&, const char*);
template Option CommandLine::add_option(const char*, const char*, unsigned&, const char*);
template Option CommandLine::add_option(const char*, const char*, uint64_t&, const char*);
template Option CommandLine::add_option(const char*, const char*, std::optional<int64_t>&, const char*);

Option CommandLine::add_flag(const char* name, bool& value, const char* what) {
    return Option(app_->add_flag(name, value, what));
}

Option CommandLine::add_flag(const char* name, const std::function<void()>& when_given, const char* what) {
    return Option(app_->add_flag_callback(name, when_given, what));
}

Option CommandLine::option(const char* name) { return Option(app_->get_option(name)); }

void CommandLine::add_files(const char* name, const char* what) {
    app_->add_option(name, files, std::string(what) + "; \"-\" is standard input")->required()->type_name("");
    add_flag("-r,--recursive", recursive,
             "Of a directory, read the Maildir or all files in it and below, but no links and nothing hidden save "
             "Maildirs");
}

void CommandLine::add_file() {
    app_->add_option("FILE", files, "File to read; \"-\", also by default, is standard input")
        ->expected(0, 1)
        ->type_name("");
    add_output();
}

void CommandLine::add_output() {
    add_option("-o,--output", "PATH", output, "File to write, all of it or nothing; standard output by default");
}

void CommandLine::add_word(const char* name, const char* what, std::vector<std::string> words) {
    add_argument(name, word, what).required().one_of(std::move(words));
}

void CommandLine::only_with(std::vector<std::string> words, const Option& option) {
    limited_.push_back({option, std::move(words)});
}

const CommandLine::Limited* CommandLine::misplaced() const {
    const auto found = std::find_if(limited_.begin(), limited_.end(), [&](const Limited& limited) {
        return limited.option.is_given() && std::count(limited.words.begin(), limited.words.end(), word) == 0;
    });
    return found == limited_.end() ? nullptr : &*found;
}

void CommandLine::add_texts() {
    add_argument("TEXT", texts, "Texts; \"-\" is standard input, a text a line").required();
}

void CommandLine::add_json() {
    const bool has_files = app_->get_option_no_throw("--recursive") != nullptr;
    add_flag("--json", json,
             has_files ? "One object a line; of a file that must be given up, one with file and error"
                       : "One object a line");
}

void CommandLine::add_nested() {
    add_flag(
        "--no-nested", [this] { parse_options.nested = false; }, "Leave enclosed messages (message/rfc822) whole");
}

void CommandLine::add_verbose() {
    add_flag(
        "-v,--verbose", [this] { parse_options.level = kEveryLevel; },
        "Show all that the library says, not only what is wrong");
}

std::optional<Exit> CommandLine::read(Arguments arguments, Session& session) {
    for (CLI::Option* option : app_->get_options()) option->transform(unguarded);
    std::for_each(arguments.begin(), arguments.end(), guard);
    std::reverse(arguments.begin(), arguments.end());  // the order that it wants
    try {
        app_->parse(std::move(arguments));
    } catch (const CLI::CallForHelp&) {
        session.output.write(app_->help());
        return Exit::success;
    } catch (const CLI::ParseError& error) {
        return misuse(unguarded(error.what()), session);
    }
    if (const Limited* option = misplaced())
        return misuse(option->option.name() + " does not go with " + word, session);
    return std::nullopt;
}

Exit CommandLine::misuse(const std::string& text, Session& session) const {
    session.output.complain({}, text);
    session.output.complain({}, app_->get_name() + " --help tells more");
    return Exit::usage;
}

}  // namespace vel::command
