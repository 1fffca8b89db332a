// vel log: an old log file goes to the postmaster.
#include <unistd.h>

#include <array>
#include <filesystem>

#include "tools/queue/connection.h"
#include "tools/settings/effective.h"
#include "tools/settings/gateway_name.h"
#include "tools/text/ascii.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/command_line.h"
#include "vel/notify.h"

namespace vel::command {
namespace {

constexpr const char* kFooter =
    "Example:\n"
    "  printf 'the last line\\n' > ostra.log.1; vel log send ostra.log.1\n"
    "\n"
    "The message is from the postmaster and for him; it goes into the queue for the channel DSN, with the subject\n"
    "\"old log file NAME\". Without FILE it is the one that [Log] Target names, with \".1\" behind its name. The file\n"
    "stays where it is.\n"
    "\n"
    "Exit codes: 66 no such file, 69 the queue cannot be reached, 75 the message could not be made, or the queue has\n"
    "not taken it, 78 the gateway has no name, or the log goes to no file; the reason is told.\n";

struct Action {
    const char* name;
};
constexpr std::array kActions{Action{"send"}};

// Where the last rotation has left the log. Throws Failure when it goes to no file.
std::string last_log() {
    const std::string target = value_of(row_of("Log", "Target"));
    if (target.empty() || same(target, "stderr") || same(target, "syslog"))
        throw Failure(Exit::config, "FILE is required while [Log] Target is no file: " + target);
    return target + ".1";
}

// The library's call succeeds also when the queue refuses the message; then there is an error in the log.
void send_log(const std::string& file, Session& main) {
    main.journal.take();
    const int result = SendOldLogfile(file.c_str(), 0);
    std::string told;
    for (const LogLine& line : main.journal.take()) {
        if (line.level == kErrorLevel) told.append("; ").append(visible(line.text));
    }
    if (result != 0 || !told.empty()) throw Failure(Exit::temporary, "the log has not been sent" + told);
}

}  // namespace

Exit run_log(Arguments arguments, Session& main) {
    CommandLine line("log", "Mails an old log file to the postmaster.", kFooter);
    std::string file;
    line.add_word("ACTION", "send", kActions);
    line.add_argument("FILE", file, "The log file");
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    if (file.empty()) file = last_log();
    if (::access(file.c_str(), R_OK) != 0) throw Failure::of_system_call(Exit::no_input, file);
    if (!std::filesystem::is_regular_file(file)) throw Failure(Exit::no_input, file + ": is no file");
    gateway_name();
    connect_to_queue(main);
    send_log(file, main);
    main.output.write("sent to the postmaster\n");
    return Exit::success;
}

}  // namespace vel::command
