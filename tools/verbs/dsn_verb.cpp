// vel dsn: delivery reports, made and read.
#include <array>
#include <nlohmann/json.hpp>

#include "tools/message/draw_tree.h"
#include "tools/message/message_json.h"
#include "tools/report/delivery_report.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/many_files.h"
#include "tools/verbs/reporting.h"
#include "tools/verbs/verb.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Examples:\n"
        "  printf 'The mailbox is gone.\\n' | vel dsn $(printf 'Subject: Hi\\n\\nHello\\n' | vel send - --from "
        "jo@example.com --to ann@example.com) --subject 'Not delivered' --text - --recipient "
        "'final=ann@example.com;action=failed;status=5.1.1'\n"
        "  printf 'From: MAILER-DAEMON@mx\\n\\nThis could not be delivered to:\\n<ann@a>: 550 5.1.1 unknown\\n' | vel "
        "dsn --read -\n"
        "\n"
        "Makes a report (RFC 3464) on a message, which is named by the identifier of its entry in the queue or by the\n"
        "path of its file; it stays where it is. The report goes into the queue for the channel DSN: the text, what\n"
        "is said of each recipient, and the message's header block, or with --ret full, when one has failed, all of\n"
        "it. The sender, whom it is for, --envid, in xtext, and --ret are those of the queue's envelope where they\n"
        "are not said. \"<>\" is nobody; such a report goes to the postmaster, and so do reports of a failure when\n"
        "[Options] BounceToPostmaster is YES.\n"
        "\n"
        "The members of --recipient, with \";\" between them; original, final and remote are an ORCPT, an address and\n"
        "a host:\n"
        "  final=ADDRESS\n"
        "  action=failed, delayed, delivered, relayed or expanded\n"
        "  status=CODE                    5.1.1, as RFC 3463 has it\n"
        "  original=[TYPE;]ADDRESS        whom the sender has addressed; without a type that of mail, rfc822\n"
        "  remote=HOST                    who has said so\n"
        "  diagnostic=TEXT                in its words of SMTP\n"
        "  last-attempt=DATE              a date as vel date reads it\n"
        "  will-retry=DATE\n"
        "The first three are required. A value is one line of ASCII, of at most 900 bytes; a \";\" in it is its own\n"
        "unless a NAME= follows. The exit codes are those of vel bounce.\n"
        "\n"
        "The JSON object: outcome (\"reported\" or \"to_postmaster\"), to (the sender, or null).\n"
        "\n"
        "With --read, reads delivery reports from anywhere: those with fields for programs (RFC 3464; RFC 6533 for\n"
        "addresses in UTF-8), and what mailers write for people, in plain text or HTML: lists of addresses with\n"
        "reasons, transcripts of sessions. Reasons that the fields leave out come from the text beside them. A report\n"
        "that is forwarded is found in the message that encloses it; of nested ones the outermost counts. First comes\n"
        "what the report is about: Message-ID and subject of the returned message, the identifier of its envelope\n"
        "(RFC 3461); then each recipient. A bounce may name none, as those of vel bounce: that is one recipient\n"
        "without an address, and the returned message's To and Cc are shown. The verdict is one of:\n"
        "  delivered\n"
        "  relayed            to a host that reports nothing\n"
        "  expanded           to the addresses of a list\n"
        "  delayed            delivery is still being tried\n"
        "  temporary failure  given up, for a cause that may pass: the class of the status is 4\n"
        "  permanent failure\n"
        "  unknown            neither action nor code tells\n"
        "The action counts; where there is none, the class of the first code in status and reason. Texts are cut at\n"
        "1000 bytes; at most 50000 recipients are shown, and how many more there are.\n"
        "A file that is no report is said to be none, with exit code 65; so are a disposition notification (RFC "
        "8098),\n"
        "which tells what a reader did, and a feedback report (RFC 5965). Messages that the library refuses are read\n"
        "as vel parse reads them, with exit code 65.\n"
        "\n"
        "The JSON object, with --read: file, mime, normalized, fallback, removed, messages (vel parse --help); kind\n"
        "(fields, for programs; text, for people), part (the index that the recipients come from in vel parse; null:\n"
        "bytes of no entity, or the header), reporting_mta, arrival_date, envelope_id, message_id, subject (text,\n"
        "converted), addressees (To and Cc of the returned message), recipients, left_out (how many more). A\n"
        "recipient: address, original (that the sender gave), verdict, action, status, reason, remote_mta,\n"
        "last_attempt, retry_until. What is absent is null.\n"
        "\n") +
    kAboutJsonTexts;

Exit read_report(const std::string& file, const CommandLine& line, Session& session) {
    const ParsedMessage message = parse_message(file, line.parse_options, session);
    const DeliveryReport report = read_delivery_report(message, session);
    if (line.json) {
        Json object = message_facts(message);
        object.update(report_json(report));
        session.output.write(one_line(object).append("\n"));
    } else {
        session.output.write(heading_of(message).append("\n"));
        write_report(report, session.output);
    }
    return message.exit();
}

void declare(CommandLine& line, ReportOptions& options, bool& read) {
    line.add_files("FILE", "The message to report on; with --read, reports");
    auto to_read = line.add_flag("--read", read, "Tell what the reports say");
    line.option("--recursive").needs(to_read);
    line.add_verbose();
    line.option("--verbose").needs(to_read);
    const std::array of_making{
        line.add_option("--subject", "TEXT", options.subject, "The subject of the report"),
        line.add_option("--text", "FILE", options.text_file, "What it says to people; \"-\" is standard input"),
        line.add_option("--recipient", "MEMBERS", options.recipients, "What it says of a recipient"),
        line.add_option("--sender", "ADDRESS", options.sender, "Who sent the message, or \"<>\""),
        line.add_option("--envid", "ID", options.envelope_id, "What the sender calls the envelope"),
        line.add_option("--ret", "WORD", options.ret, "How much of the message is returned: full or hdrs"),
    };
    for (Option option : of_making) option.excludes(to_read);
    line.add_json();
}

bool is_complete(const CommandLine& line, const ReportOptions& options) {
    return line.files.size() == 1 && !options.subject.empty() && !options.text_file.empty() &&
           !options.recipients.empty();
}

}  // namespace

Exit run_dsn(Arguments arguments, Session& main) {
    CommandLine line("dsn", "Makes delivery reports, and reads them: what became of each recipient.", kFooter);
    ReportOptions options;
    bool read = false;
    declare(line, options, read);
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    if (read) {
        return for_each_file(
            line, main, [&](const std::string& file, Session& session) { return read_report(file, line, session); });
    }
    if (!is_complete(line, options)) {
        return line.misuse("a report needs one message, --subject, --text and --recipient; --read reads reports", main);
    }
    options.message = line.files.front();
    send_report(options, line.json, main);
    return Exit::success;
}

}  // namespace vel::command
