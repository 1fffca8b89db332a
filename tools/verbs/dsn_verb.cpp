// vel dsn: delivery reports.
#include <nlohmann/json.hpp>

#include "tools/message/delivery_report.h"
#include "tools/message/draw_tree.h"
#include "tools/message/message_json.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/many_files.h"
#include "tools/verbs/verb.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Example:\n"
        "  printf 'From: MAILER-DAEMON@mx\\n\\nThis could not be delivered to:\\n<ann@a>: 550 5.1.1 unknown\\n' | vel "
        "dsn "
        "--read -\n"
        "\n"
        "Reads delivery reports from anywhere: those with fields for programs (RFC 3464; RFC 6533 for addresses in\n"
        "UTF-8), and what mailers write for people where there are none: lists of addresses with reasons, transcripts\n"
        "of sessions. A report that is forwarded is found in the message that encloses it; of nested ones the\n"
        "outermost counts. First comes what the report is about: Message-ID and subject of the returned message, the\n"
        "identifier of its envelope (RFC 3461); then each recipient. The verdict is one of:\n"
        "  delivered\n"
        "  relayed            to a host that reports nothing\n"
        "  expanded           to the addresses of a list\n"
        "  delayed            delivery is still being tried\n"
        "  temporary failure  given up, for a cause that may pass: the class of the status is 4\n"
        "  permanent failure\n"
        "  unknown            neither action nor code tells\n"
        "The action counts; where there is none, the class of the first code in status and reason. Texts are cut at\n"
        "1000 bytes; at most 50000 recipients are shown, and how many more there are.\n"
        "A file that is no report is said to be none, with exit code 65; so is a disposition notification (RFC 8098),\n"
        "which tells what a reader did. Messages that the library refuses are read as vel parse reads them, with exit\n"
        "code 65.\n"
        "\n"
        "The JSON object: file, mime, normalized, fallback, removed, messages (vel parse --help); kind (fields, for\n"
        "programs; text, for people), part (the index that the recipients come from in vel parse; null: bytes of no\n"
        "entity, or the header), reporting_mta, arrival_date, envelope_id, message_id, subject (text, converted),\n"
        "recipients, left_out (how many more). A recipient: address, original (that the sender gave), verdict, "
        "action,\n"
        "status, reason, remote_mta, last_attempt, retry_until. What is absent is null.\n"
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

}  // namespace

Exit run_dsn(Arguments arguments, Session& main) {
    CommandLine line("dsn", "Reads delivery reports: what became of each recipient.", kFooter);
    bool read = false;
    line.app().add_flag("--read", read, "Tell what the reports say")->required();
    line.add_files();
    line.add_json();
    line.add_verbose();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    return for_each_file(line, main,
                         [&](const std::string& file, Session& session) { return read_report(file, line, session); });
}

}  // namespace vel::command
