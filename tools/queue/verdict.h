// What the end of a command says about a delivery.
#ifndef VEL_TOOLS_QUEUE_VERDICT_H
#define VEL_TOOLS_QUEUE_VERDICT_H

#include <string>
#include <string_view>

namespace vel::command {

enum class Verdict {
    delivered,
    deferred,  // another attempt may succeed
    failed,    // none will
    broken_off,
    lost,  // the claim is another's
};

// As mailers read the codes of sysexits: 0 is delivered; 71 (system error), 74 (input/output error) and 75 (temporary
// failure) are deferred. So is what tells nothing about the message: a signal, 126 and 127 (cannot be run) and what a
// shell makes of a signal (128 and above). All others are failures.
//   status  as waitpid has it
Verdict verdict_of(int status);

// The status code (RFC 3463) of what has failed or been deferred.
//   last_line  what the command has said, perhaps nothing. A server's reply that fits the verdict counts more than the
//              exit code: "550 5.7.1 refused" (RFC 2034).
std::string status_code_of(int status, std::string_view last_line);

// "exit code 67: no such user", "signal 9 (Killed)"; of a server's reply that fits, nothing else.
std::string reason_of(int status, std::string_view last_line);

}  // namespace vel::command

#endif
