#include "tools/verbs/verb.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vel::command {
namespace {

constexpr std::array kVerbs{
    Verb{"parse", "show the entities of a message", run_parse},
    Verb{"show", "read a message: chief header lines and text", run_show},
    Verb{"extract", "write the bodies of a message into files, decoded", run_extract},
    Verb{"headers", "show the header fields of a message", run_headers},
    Verb{"check", "tell what is wrong with a message, and where", run_check},
    Verb{"split", "cut a mailbox into messages", run_split},
    Verb{"build", "build a message from a text and files", run_build},
    Verb{"send", "put a message into the queue", run_send},
    Verb{"notify", "send a message of the gateway's own: a text and files", run_notify},
    Verb{"bounce", "return a message to its sender", run_bounce},
    Verb{"dsn", "make a delivery report, and read one: what became of each recipient", run_dsn},
    Verb{"encode", "write a file in base64, quoted-printable, uuencode or BinHex", run_encode},
    Verb{"decode", "write a file out of one of these", run_decode},
    Verb{"word", "encode and decode encoded words in header texts", run_word},
    Verb{"japanese", "convert a file between JIS and Shift-JIS", run_japanese},
    Verb{"address", "show what is made of an address list", run_address},
    Verb{"date", "show what is made of a date", run_date},
    Verb{"init", "make a working place: configuration, queue, directories", run_init},
    Verb{"config", "show the settings that are in force, and what is wrong with them", run_config},
    Verb{"queue", "see what is in the queue, hold or release it, hand it to a command", run_queue},
    Verb{"types", "see and change the table of file types", run_types},
    Verb{"log", "mail an old log file to the postmaster", run_log},
};

constexpr std::string_view kHelp = "help";
constexpr std::size_t kColumn = 10;  // of the summaries

std::string row(std::string_view name, std::string_view summary) {
    return std::string("  ").append(name).append(kColumn - name.size(), ' ').append(summary).append("\n");
}

std::string help() {
    std::string text =
        "Internet mail from the shell: takes messages apart, builds and sends them, encodes and decodes.\n"
        "Usage: vel VERB [OPTIONS] [FILE | TEXT]...\n"
        "\n"
        "Verbs:\n";
    text += summary_of(kVerbs);
    text += row(kHelp, "show this, or with a verb behind it all about that verb");
    return text +=
           "\n"
           "vel VERB --help is the same as vel help VERB; vel --version shows the version.\n"
           "The file \"-\" is standard input. With many files all cores work; what is printed keeps their order.\n"
           "Data goes to standard output, messages go to standard error.\n"
           "Exit codes: 0 success, 64 usage, 65 bad data, 66 no input, 69 unavailable, 73 cannot create,\n"
           "74 input/output error, 75 not now, 78 configuration error; of several files the worst one counts.\n"
           "\n"
           "Example:\n"
           "  printf 'Subject: test\\n\\ntext\\n' | vel parse -\n";
}

Exit answer(const std::string& text, Session& main) {
    main.output.write(text);
    return Exit::success;
}

Exit misuse(const std::string& text, Session& main) {
    main.output.complain({}, text + "; vel --help lists them");
    return Exit::usage;
}

Exit run_verb(const std::string& name, Arguments arguments, Session& main) {
    const Verb* const verb = verb_named(kVerbs, name);
    if (!verb) return misuse("no verb \"" + name + "\"", main);
    return verb->run(std::move(arguments), main);
}

// "help VERB" stands for "VERB --help".
Exit run_help(Arguments arguments, Session& main) {
    if (arguments.empty() || arguments.front() == kHelp) return answer(help(), main);
    const std::string name = arguments.front();
    arguments.erase(arguments.begin());
    arguments.emplace_back("--help");
    return run_verb(name, std::move(arguments), main);
}

}  // namespace

std::span<const Verb> verbs() { return kVerbs; }

std::string summary_of(std::span<const Verb> verbs) {
    std::string text;
    for (const Verb& verb : verbs) text += row(verb.name, verb.summary);
    return text;
}

const Verb* verb_named(std::span<const Verb> verbs, std::string_view name) {
    const auto verb = std::find_if(verbs.begin(), verbs.end(), [&](const Verb& v) { return v.name == name; });
    return verb == verbs.end() ? nullptr : &*verb;
}

Exit run_command(Arguments arguments, Session& main) {
    if (arguments.empty()) return misuse("no verb given", main);
    const std::string wanted = arguments.front();
    arguments.erase(arguments.begin());
    if (wanted == "--help" || wanted == "-h") return answer(help(), main);
    if (wanted == "--version") return answer("vel " VEL_VERSION "\n", main);
    if (wanted == kHelp) return run_help(std::move(arguments), main);
    return run_verb(wanted, std::move(arguments), main);
}

}  // namespace vel::command
