// vel queue: the queue for its operator, and for whoever delivers from it.
#include "tools/verbs/queue_verbs.h"

#include <array>
#include <utility>

namespace vel::command {
namespace {

constexpr std::array kQueueVerbs{
    Verb{"list", "a line for each recipient, oldest message first", run_queue_list},
    Verb{"show", "all there is to know of an entry", run_queue_show},
    Verb{"cat", "write the message of an entry", run_queue_cat},
    Verb{"hold", "keep what waits in the queue until it is released", run_queue_hold},
    Verb{"release", "make what is held due at once", run_queue_release},
    Verb{"remove", "take recipients, or whole entries, out of the queue", run_queue_remove},
    Verb{"status", "how much there is, how old, and how much space is free", run_queue_status},
    Verb{"check", "compare the queue's database with its files", run_queue_check},
    Verb{"run", "hand what is due to a command that delivers it", run_queue_run},
};

std::string help() {
    return "The message queue below [Gateway] QueueDirectory.\n"
           "Usage: vel queue VERB [OPTIONS] [ID]...\n"
           "\n"
           "Verbs:\n" +
           summary_of(kQueueVerbs) +
           "\n"
           "vel queue VERB --help tells the rest. An ID is what vel queue list shows, or the path of the message "
           "file.\n"
           "A recipient waits until it is due, is claimed while somebody delivers to it, or is held until an operator\n"
           "releases or removes it. Exit codes: 64 usage, 65 something is wrong with the queue, 66 no such entry,\n"
           "69 the queue cannot be reached, 75 a threshold is passed, 78 a wrong setting.\n"
           "\n"
           "Examples:\n"
           "  vel queue list --state held\n"
           "  vel queue status --max-held 0 --max-age 4h\n"
           "  vel queue run --channel smtp --once -- sh -c 'exec sendmail -i -f \"$VEL_SENDER\" -- "
           "\"$VEL_RECIPIENT\"'\n";
}

}  // namespace

Exit run_queue(Arguments arguments, Session& main) {
    const std::string name = arguments.empty() ? "" : arguments.front();
    if (name == "--help" || name == "-h") {
        main.output.write(help());
        return Exit::success;
    }
    const Verb* const verb = verb_named(kQueueVerbs, name);
    if (!verb) {
        main.output.complain({}, (arguments.empty() ? "no verb given" : "no verb \"queue " + name + "\"") +
                                     "; vel queue --help lists them");
        return Exit::usage;
    }
    arguments.erase(arguments.begin());
    return verb->run(std::move(arguments), main);
}

}  // namespace vel::command
