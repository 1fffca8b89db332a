#include "tools/queue/attempt.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <nlohmann/json.hpp>

#include "tools/io/blocks.h"
#include "tools/io/caller_zone.h"
#include "tools/io/child.h"
#include "tools/queue/entries.h"
#include "tools/text/instant.h"

namespace vel::command {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetweenLooks{100};  // at a command that neither ends nor says anything
constexpr std::chrono::seconds kGrace{10};               // between the signal that asks and the one that does not

// A file that has no name, so that a command that does not read it holds up nobody.
Descriptor file_of(const std::string& text) {
    Descriptor file(::memfd_create("envelope", MFD_CLOEXEC));
    if (!file || !write_all(file.get(), text) || ::lseek(file.get(), 0, SEEK_SET) != 0)
        throw Failure::of_system_call(Exit::io_error, "the envelope");
    return file;
}

// Ours, with the caller's time zone, which the library's start-up has changed, and what tells of the entry.
std::vector<std::string> environment_for(const MQEntry& entry) {
    std::vector<std::string> all{"VEL_ID=" + std::string(entry.id), "VEL_CHANNEL=" + std::string(entry.channel),
                                 "VEL_SENDER=" + std::string(entry.sender.address)};
    if (entry.recipientCount == 1) all.push_back("VEL_RECIPIENT=" + std::string(entry.recipients->address));
    if (!caller_zone().empty()) all.push_back("TZ=" + caller_zone());
    for (char** setting = environ; *setting; ++setting) {
        constexpr std::array kReplaced{"VEL_ID=", "VEL_CHANNEL=", "VEL_SENDER=", "VEL_RECIPIENT=", "TZ="};
        const std::string_view text = *setting;
        if (std::none_of(kReplaced.begin(), kReplaced.end(), [&](const char* name) { return text.starts_with(name); }))
            all.emplace_back(text);
    }
    return all;
}

// Looks after a command while it runs: keeps its claim, and ends it when there is a reason.
class Watch {
  public:
    enum class Reason { none, claim_lost, told_to_stop, too_long };

    Watch(Child& child, const DeliveryCommand& command, const Circumstances& circumstances)
        : child_(child), circumstances_(circumstances), extension_(Clock::now() + circumstances.between_extensions) {
        if (command.timeout) end_ = Clock::now() + *command.timeout;
    }

    void look() {
        const Clock::time_point now = Clock::now();
        if (now >= extension_ && reason_ != Reason::claim_lost) extend(now);
        if (reason_ != Reason::none) {
            if (now >= kill_) child_.signal(SIGKILL);
        } else if (const int signal = circumstances_.stop.signal()) {
            end(Reason::told_to_stop, signal, now);
        } else if (now >= end_) {
            end(Reason::too_long, SIGTERM, now);
        }
    }

    Reason reason() const { return reason_; }

  private:
    void extend(Clock::time_point now) {
        extension_ = now + circumstances_.between_extensions;
        if (!circumstances_.extend()) end(Reason::claim_lost, SIGKILL, now);
    }

    void end(Reason reason, int signal, Clock::time_point now) {
        reason_ = reason;
        kill_ = now + kGrace;
        child_.signal(signal);
    }

    Child& child_;
    const Circumstances& circumstances_;
    Clock::time_point extension_;
    Clock::time_point end_ = Clock::time_point::max();
    Clock::time_point kill_{};
    Reason reason_ = Reason::none;
};

// A command that has delivered has delivered, whatever was asked of it.
Outcome outcome_of(int status, Watch::Reason reason, const std::string& last_line, const DeliveryCommand& command) {
    if (reason == Watch::Reason::claim_lost) return {Verdict::lost, {}};
    const Verdict verdict = verdict_of(status);
    if (verdict == Verdict::delivered) return {verdict, {}};
    if (reason == Watch::Reason::told_to_stop) return {Verdict::broken_off, {}};
    if (reason == Watch::Reason::none)
        return {verdict, reason_of(status, last_line), status_code_of(status, last_line)};
    return {Verdict::deferred,
            "not done within " + duration_text(command.timeout->count()) + ", " + reason_of(status, last_line)};
}

}  // namespace

Outcome attempt(const MQEntry& entry, const DeliveryCommand& command, const Circumstances& circumstances) {
    const Descriptor message = open_for_reading(entry.path);
    const Descriptor envelope = file_of(one_line(entry_json(entry)).append("\n"));
    CommandStream output(circumstances.on_line), errors(circumstances.on_line);
    Child child({command.program,
                 command.arguments,
                 environment_for(entry),
                 {message.get(), output.writing_end(), errors.writing_end(), envelope.get()}});
    output.close_writing_end();
    errors.close_writing_end();
    Watch watch(child, command, circumstances);
    std::optional<int> status;
    while (!(status = child.ended())) {
        CommandStream::listen(output, errors, child.end(), kBetweenLooks);
        watch.look();
    }
    output.finish();
    errors.finish();
    return outcome_of(*status, watch.reason(), errors.last_line(), command);
}

}  // namespace vel::command
