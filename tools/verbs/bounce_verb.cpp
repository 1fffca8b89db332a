// vel bounce: a message goes back to its sender.
#include <nlohmann/json.hpp>

#include "tools/compose/mailbox.h"
#include "tools/compose/text_chain.h"
#include "tools/queue/connection.h"
#include "tools/settings/gateway_name.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/named_message.h"
#include "vel/notify.h"

namespace vel::command {
namespace {

constexpr const char* kNobody = "<>";

const std::string kFooter =
    std::string(
        "Examples:\n"
        "  vel bounce $(printf 'Subject: Hi\\n\\nHello\\n' | vel send - --from jo@example.com --to ann@example.com) "
        "--reason 'no such user'\n"
        "  printf 'Subject: Hi\\r\\n\\r\\nHello\\r\\n' > hi.msg; vel bounce ./hi --sender jo@example.com --reason "
        "'too large' 'at most 10 MB'\n"
        "\n"
        "BASE is the identifier of an entry of the queue, or the path of a message file without its .msg. The message\n"
        "itself stays where it is. The notice goes into the queue for the channel DSN, with each reason, in ASCII, on "
        "a\n"
        "line of its own and all of the message behind them.\n"
        "\n"
        "The sender is that of the queue's envelope, if --sender does not say another one. \"<>\" is nobody: his\n"
        "messages are discarded, unless [Options] BounceToPostmaster sends them to the postmaster. --header-only\n"
        "returns no more than the header block; that notice goes to the postmaster, since the sender cannot be said.\n"
        "[Options] BounceSender is whom bounces are from.\n"
        "\n"
        "Exit codes: 66 no such message, 69 the queue cannot be reached, 75 it has not taken the notice, perhaps for\n"
        "want of space, 78 the gateway has no name; the reason is told.\n"
        "\n"
        "The JSON object: outcome (\"bounced\", \"to_postmaster\" or \"discarded\"), to (the sender who got it, or\n"
        "null).\n"
        "\n") +
    kAboutJsonTexts;

struct Options {
    std::string base, sender;
    std::vector<std::string> reasons;
    bool header_only = false;
    bool to_postmaster = false;
};

void declare(CommandLine& line, Options& options) {
    line.add_argument("BASE", options.base, "The message").required();
    line.add_option("--reason", "TEXT", options.reasons, "Why it comes back, a line each").required();
    auto sender = line.add_option("--sender", "ADDRESS", options.sender, "Who sent it, or \"<>\"");
    auto header = line.add_flag("--header-only", options.header_only, "Return the header block only");
    auto postmaster = line.add_flag("--to-postmaster", options.to_postmaster, "The notice is for the postmaster");
    header.excludes(sender).excludes(postmaster);
    postmaster.excludes(sender);
    line.add_json();
}

// Throws Failure.
void check(Options& options) {
    if (!options.sender.empty() && options.sender != kNobody) {
        options.sender = parse_mailbox("--sender", options.sender).canonical;
    }
    for (const std::string& reason : options.reasons) {
        expect_one_line("--reason", reason);
        const bool is_ascii = std::all_of(reason.begin(), reason.end(), [](char c) { return (c & 0x80) == 0; });
        if (!is_ascii) throw Failure(Exit::usage, "--reason: only ASCII goes into a notice");
    }
}

struct Message {
    std::string base;
    std::string sender;  // empty: it is not needed
};

// Looks up in the queue what the command line does not say. Throws Failure.
Message returned_message(const Options& options, Session& main) {
    const bool needs_sender = options.sender.empty() && !options.header_only && !options.to_postmaster;
    NamedMessage found = find_message(options.base, needs_sender, main);
    if (!needs_sender) return {std::move(found.base), options.sender};
    const char* const sender = found.entry->sender.address;
    return {std::move(found.base), *sender ? sender : kNobody};
}

struct Outcome {
    const char* name;
    std::string to;    // empty: nobody
    std::string text;  // for people
};

constexpr int kFailed = -1;

int bounce(const Message& message, const Options& options) {
    const TextChain reasons(options.reasons);
    const char* const base = message.base.c_str();
    if (options.to_postmaster) return BounceMimeMessageToPostmaster(base, reasons.get(), 0, nullptr);
    if (options.header_only) return BounceMimeMessageHeader(base, reasons.get(), 0, nullptr);
    const _envFrom sender{message.sender.c_str(), "", 0, 0, "", ""};
    return BounceMimeMessage(base, &sender, reasons.get(), 0, nullptr);
}

Outcome outcome_of(int result, const Message& message) {
    if (result == 2) return {"discarded", "", "discarded: nobody has sent it"};
    if (result == 1 || message.sender.empty()) return {"to_postmaster", "", "sent to the postmaster"};
    return {"bounced", message.sender, "bounced to " + visible(message.sender)};
}

}  // namespace

Exit run_bounce(Arguments arguments, Session& main) {
    CommandLine line("bounce", "Returns a message that cannot be delivered to its sender.", kFooter);
    Options options;
    declare(line, options);
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    check(options);
    gateway_name();
    connect_to_queue(main);
    const Message message = returned_message(options, main);
    main.journal.take();
    const int result = bounce(message, options);
    if (result == kFailed) throw queue_failure(main, "the message has not been returned", Exit::temporary);
    const Outcome outcome = outcome_of(result, message);
    const Json to = outcome.to.empty() ? Json(nullptr) : Json(json_text(outcome.to));
    main.output.write((line.json ? one_line({{"outcome", outcome.name}, {"to", to}}) : outcome.text) + "\n");
    return Exit::success;
}

}  // namespace vel::command
