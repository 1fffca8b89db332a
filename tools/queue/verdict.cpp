#include "tools/queue/verdict.h"

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "tools/io/child.h"
#include "tools/report/status_code.h"

namespace vel::command {
namespace {

constexpr int kSystemError = 71, kInputOutput = 74, kTemporary = 75;
constexpr int kNotExecutable = 126, kSignalled = 128;  // as a shell says it

// Of the codes of sysexits those that say more than that it did not work.
struct Meaning {
    int code;
    const char* status;
};
constexpr std::array kMeanings{
    Meaning{65, "5.6.0"},  // the message is wrong
    Meaning{67, "5.1.1"},  // no such user
    Meaning{68, "5.1.2"},  // no such host
    Meaning{76, "5.5.0"},  // protocol
    Meaning{77, "5.7.1"},  // not allowed
};

bool is_temporary(int code) {
    constexpr std::array kTemporaries{kSystemError, kInputOutput, kTemporary, kNotExecutable, kCannotRun};
    return code >= kSignalled || std::count(kTemporaries.begin(), kTemporaries.end(), code) != 0;
}

std::string signal_text(int signal) {
    const char* const name = ::sigdescr_np(signal);
    std::string text = "signal " + std::to_string(signal);
    return name ? text.append(" (").append(name).append(")") : text;
}

// The status code behind the reply code that a line begins with, when it is of the verdict's class; else empty.
std::string_view status_in_reply(int status, std::string_view line) {
    const std::string_view reply = reply_code_in(line), code = enhanced_code_in(line);
    const char wanted = verdict_of(status) == Verdict::deferred ? '4' : '5';
    const bool is_reply = !reply.empty() && reply.data() == line.data() && reply.front() == wanted;
    const bool follows = !code.empty() && code.data() == line.data() + reply.size() + 1 && code.front() == wanted;
    return is_reply && follows ? code : std::string_view();
}

}  // namespace

Verdict verdict_of(int status) {
    if (!WIFEXITED(status)) return Verdict::deferred;
    if (WEXITSTATUS(status) == 0) return Verdict::delivered;
    return is_temporary(WEXITSTATUS(status)) ? Verdict::deferred : Verdict::failed;
}

std::string status_code_of(int status, std::string_view last_line) {
    if (const auto code = status_in_reply(status, last_line); !code.empty()) return std::string(code);
    if (verdict_of(status) == Verdict::deferred) return "4.0.0";
    for (const Meaning& meaning : kMeanings) {
        if (WEXITSTATUS(status) == meaning.code) return meaning.status;
    }
    return "5.0.0";
}

std::string reason_of(int status, std::string_view last_line) {
    if (!status_in_reply(status, last_line).empty()) return std::string(last_line);
    std::string text =
        WIFEXITED(status) ? "exit code " + std::to_string(WEXITSTATUS(status)) : signal_text(WTERMSIG(status));
    return last_line.empty() ? text : text.append(": ").append(last_line);
}

}  // namespace vel::command
