// vel types: the table of file types for its operator.
#include <array>
#include <utility>

#include "tools/verbs/types_verbs.h"

namespace vel::command {
namespace {

constexpr std::array kTypesVerbs{
    Verb{"list", "all types, in the order of the table", run_types_list},
    Verb{"find", "what an extension, a content type or Macintosh codes stand for", run_types_find},
    Verb{"of", "as what a file would be sent", run_types_of},
    Verb{"add", "add a type, or replace one", run_types_add},
    Verb{"remove", "take types out", run_types_remove},
    Verb{"import", "put the types of a file in, all or none", run_types_import},
    Verb{"export", "write all types into a file", run_types_export},
};

std::string help() {
    return "The table of file types below [Gateway] QueueDirectory, by which attachments get their content types.\n"
           "Usage: vel types VERB [OPTIONS] [ARGUMENT]...\n"
           "\n"
           "Verbs:\n" +
           summary_of(kTypesVerbs) +
           "\n"
           "vel types VERB --help tells the rest. Where there is no table, or a damaged one, that below [Config]\n"
           "InstallDirectory is copied; what was there is kept as magicdb.db.1. Exit codes: 64 usage, 65 bad data,\n"
           "66 no such type or file, 69 there is no table, 73 a file cannot be made.\n"
           "\n"
           "Examples:\n"
           "  vel types find jpg image/png\n"
           "  vel types add --extension foo --type application/x-foo --mac 'FOO foo!'\n";
}

}  // namespace

Exit run_types(Arguments arguments, Session& main) {
    const std::string name = arguments.empty() ? "" : arguments.front();
    if (name == "--help" || name == "-h") {
        main.output.write(help());
        return Exit::success;
    }
    const Verb* const verb = verb_named(kTypesVerbs, name);
    if (!verb) {
        main.output.complain({}, (arguments.empty() ? "no verb given" : "no verb \"types " + name + "\"") +
                                     "; vel types --help lists them");
        return Exit::usage;
    }
    arguments.erase(arguments.begin());
    return verb->run(std::move(arguments), main);
}

}  // namespace vel::command
