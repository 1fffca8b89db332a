// vel log: an old log file goes to the postmaster.
#include <unistd.h>

#include <array>

#include "tools/queue/connection.h"
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
    "not taken it; the reason is told.\n";

struct Action {
    const char* name;
};
constexpr std::array kActions{Action{"send"}};

// The library's call succeeds also when the queue refuses the message; then there is an error in the log.
void send_log(const char* file, Session& main) {
    main.journal.take();
    const int result = SendOldLogfile(file, 0);
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
    if (!file.empty() && ::access(file.c_str(), R_OK) != 0) throw Failure::of_system_call(Exit::no_input, file);
    connect_to_queue(main);
    send_log(file.empty() ? nullptr : file.c_str(), main);
    main.output.write("sent to the postmaster\n");
    return Exit::success;
}

}  // namespace vel::command
