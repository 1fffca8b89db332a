#include "tools/verb.h"

#include <unistd.h>

#include <algorithm>
#include <array>

#include "tools/output.h"

namespace vel::command {
namespace {

constexpr std::array kVerbs{
    Verb{"parse", "show the entities of a message", run_parse},
    Verb{"extract", "write the bodies of a message into files, decoded", run_extract},
};

constexpr std::string_view kUsage = "usage: vel VERB [OPTIONS] FILE...\n";

std::string help() {
    std::string text(kUsage);
    text += "\nReads Internet mail. Verbs:\n";
    for (const Verb& verb : kVerbs) {
        text.append("  ").append(verb.name).append(10 - verb.name.size(), ' ').append(verb.summary).append("\n");
    }
    return text +=
           "\nvel VERB --help tells more, vel --version the version. The file \"-\" is standard input.\n"
           "Exit codes: 0 success, 64 usage, 65 bad data, 66 no input, 73 cannot create, 74 input/output error;\n"
           "of several files the worst one counts.\n";
}

Exit answer(const std::string& text) {
    Output output(STDOUT_FILENO);
    output.write(text);
    output.flush();
    return Exit::success;
}

}  // namespace

std::span<const Verb> verbs() { return kVerbs; }

Exit run_command(Arguments arguments, Session& session) {
    if (arguments.empty()) {
        complain({}, "no verb given; vel --help lists them");
        return Exit::usage;
    }
    const std::string wanted = arguments.front();
    arguments.erase(arguments.begin());
    if (wanted == "--help" || wanted == "-h") return answer(help());
    if (wanted == "--version") return answer("vel " VEL_VERSION "\n");
    const auto verb = std::find_if(kVerbs.begin(), kVerbs.end(), [&](const Verb& v) { return v.name == wanted; });
    if (verb != kVerbs.end()) return verb->run(std::move(arguments), session);
    complain({}, "no verb \"" + wanted + "\"; vel --help lists them");
    return Exit::usage;
}

}  // namespace vel::command
