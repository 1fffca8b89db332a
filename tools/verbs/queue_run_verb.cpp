// vel queue run: deliveries by a command.
#include <unistd.h>

#include <array>
#include <filesystem>

#include "tools/io/child.h"
#include "tools/queue/connection.h"
#include "tools/queue/delivery_run.h"
#include "tools/queue/entries.h"
#include "tools/settings/gateway_name.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/queue_verbs.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Examples:\n"
        "  vel queue run --channel smtp --success relayed -- sh -c 'exec sendmail -i -f \"$VEL_SENDER\" -- "
        "\"$VEL_RECIPIENT\"'\n"
        "  vel queue run --channel local --channel DSN --once -- /usr/local/bin/deliver\n"
        "  vel queue run --channel list --batch --jobs 4 -- sh -c 'jq -r .recipients[].address <&3 | deliver-all'\n"
        "\n"
        "COMMAND runs once for each recipient that is due, or with --batch once for all of an entry's that are. Its\n"
        "standard input is the message file, its descriptor 3 the envelope: the JSON object below, one line. In its\n"
        "environment are VEL_ID, VEL_CHANNEL, VEL_SENDER and, for a single recipient, VEL_RECIPIENT; these come from\n"
        "the message, so quote them, and put \"--\" before an address. What it writes to standard output and standard\n"
        "error goes to standard error here, behind the identifier. It has no other descriptor, and a session of its\n"
        "own: of what it has started there nothing is left when it has been ended.\n"
        "\n"
        "Its exit code says what becomes of the recipients:\n"
        "  0                    delivered\n"
        "  71, 74, 75           deferred, as system, input/output and temporary errors\n"
        "  126, 127, over 127   deferred: the command cannot be run, or a signal ended what it ran\n"
        "  any other            failed for good\n"
        "A command that a signal ends, or that cannot be started, defers too. The reason that is kept is the exit "
        "code\n"
        "with the last line of its standard error, or that line alone when it is a server's reply that fits the exit\n"
        "code, such as \"550 5.7.1 refused\". Deferred recipients are due again after the times of [Queue]\n"
        "RetryAfter (\"5m, 15m, 30m, 1h, 2h, 4h\"; the last one repeats), unless that is later than [Queue] Lifetime\n"
        "(\"5d\") behind the arrival: then they have failed. With --batch the exit code is for all, and the recipient\n"
        "with the most attempts sets the time.\n"
        "\n"
        "What has failed goes back to the envelope's sender, with --batch in one notice for all: a delivery report\n"
        "(RFC 3464) when the envelope has any of NOTIFY, ORCPT, ENVID and RET, else a bounce with all of the message.\n"
        "NOTIFY=NEVER, or one without FAILURE, has none sent. NOTIFY=SUCCESS has a delivery reported; say --success\n"
        "relayed when COMMAND hands messages to a mailer that reports nothing, --success nothing when it passes\n"
        "NOTIFY on. NOTIFY=DELAY has a delay reported when the times of RetryAfter have all been waited: once, as far\n"
        "as attempts that are broken off, new times and --batch let it be told. Notices are in the queue, for the\n"
        "channel DSN, before the recipients leave it; \"vel queue run --channel DSN\" delivers them. The status in a\n"
        "report is 5.1.1 for exit code 67, 5.1.2 for 68, 5.6.0 for 65,\n"
        "5.5.0 for 76, 5.7.1 for 77, 5.0.0 for any other, 4.0.0 of a delay, that of the server's reply where there is\n"
        "one, and 4.4.7 when the time is over.\n"
        "\n"
        "There is no notice of a notice: what fails on the channel DSN, or has the sender \"<>\" or none, is held "
        "with\n"
        "its reason until an operator releases or removes it. While a notice cannot be made, perhaps for want of "
        "space,\n"
        "the recipients are deferred, and held when their time is over; what was delivered leaves all the same.\n"
        "\n"
        "SIGTERM, SIGINT or SIGHUP ends the run when the commands that run have ended. A second one is passed on to\n"
        "them, and what they have not delivered is given back; 10 seconds later they are killed. When vel itself is\n"
        "killed, so are its commands (but not what they have started, or what gains privileges), and others may claim\n"
        "at once: a message is delivered at least once. In the end a line tells how many recipients were delivered,\n"
        "deferred, failed and held. The exit code is 0, 69 when the queue cannot be reached, 78 when COMMAND is not\n"
        "there, the gateway has no name or a setting is wrong; what becomes of messages does not change it.\n"
        "\n") +
    kAboutEntryJson + "Here its recipients are those that were claimed.\n\n" + kAboutJsonTexts;

struct Success {
    std::string_view name;
    std::optional<Fate> fate;
};
constexpr std::array kSuccesses{Success{"delivered", Fate::delivered}, Success{"relayed", Fate::relayed},
                                Success{"nothing", std::nullopt}};

struct Options {
    RunOptions run;
    DeliveryCommand command;
    std::optional<int64_t> timeout, poll;  // in seconds
    std::string success = "delivered";
};

void declare(CommandLine& line, Options& options) {
    line.add_argument("COMMAND", options.command.program, "Behind \"--\": a program and its arguments").required();
    line.add_channel(options.run.channels, "Channels to deliver for").required();
    line.add_flag("--once", options.run.once, "End when nothing is due, instead of waiting for more");
    line.add_flag("--batch", options.run.batch, "Hand an entry's due recipients to one command together");
    line.add_option("--jobs", "N", options.run.jobs, "So many commands at once; 1 by default").between(1, 256);
    line.add_time("--timeout", options.timeout,
                  "Have SIGTERM, and SIGKILL 10 seconds later, end a command that takes longer, such as 30m, and defer")
        .positive();
    line.add_option("--success", "WORD", options.success,
                    "What NOTIFY=SUCCESS has reported of exit code 0: delivered, the default, relayed or nothing")
        .one_of({"delivered", "relayed", "nothing"});
    line.add_time("--poll", options.poll, "Look for what is due so often; 1s by default").positive();
}

void apply(Options& options) {
    if (options.timeout) options.command.timeout = std::chrono::seconds(*options.timeout);
    if (options.poll) options.run.poll = std::chrono::seconds(*options.poll);
    options.run.success = row_named(kSuccesses, options.success).fate;
}

// Before anything is claimed: what is only misspelt should not defer all the mail.
std::string path_of(const std::string& name) {
    const bool is_path = name.find('/') != std::string::npos;
    const std::string path = is_path ? name : find_program(name).value_or("");
    if (path.empty()) throw Failure(Exit::config, name + ": no such program in $PATH");
    if (::access(path.c_str(), X_OK) != 0) throw Failure::of_system_call(Exit::config, path);
    if (std::filesystem::is_directory(path)) throw Failure(Exit::config, path + ": is a directory");
    return path;
}

// What stands behind the first "--". Its arguments, which may look like anything, are kept from the option parser.
std::vector<std::string> take_command(Arguments& arguments) {
    const auto mark = std::find(arguments.begin(), arguments.end(), "--");
    if (mark == arguments.end()) return {};
    std::vector<std::string> command(std::next(mark), arguments.end());
    if (!command.empty()) arguments.erase(mark + 2, arguments.end());
    return command;
}

}  // namespace

Exit run_queue_run(Arguments arguments, Session& main) {
    CommandLine line("queue run", "Hands what is due to a command that delivers it.", kFooter);
    Options options;
    options.command.arguments = take_command(arguments);
    declare(line, options);
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    if (options.command.arguments.empty()) return line.misuse("\"--\" stands before COMMAND", main);
    apply(options);
    options.command.program = path_of(options.command.program);
    const RetryPlan plan = RetryPlan::from_settings();
    gateway_name();
    connect_to_queue(main);
    return run_deliveries(options.run, options.command, plan, main);
}

}  // namespace vel::command
