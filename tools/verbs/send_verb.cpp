// vel send: a message file into the queue.
#include "tools/compose/delivery_wishes.h"
#include "tools/compose/mailbox.h"
#include "tools/compose/outgoing.h"
#include "tools/io/input.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/many_files.h"
#include "tools/verbs/sending.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Examples:\n"
        "  printf 'Subject: Hi\\n\\nHello\\n' | vel send - --from jo@example.com --to ann@example.com\n"
        "  vel send letter.eml --from jo@example.com --to ann@example.com joe@example.net --notify failure --ret hdrs\n"
        "\n"
        "Prints the identifier, when the message is in the queue and on the disk, and nothing otherwise. The\n"
        "recipients are those of the command line, whatever the message says. Bcc and Resent-Bcc fields are taken\n"
        "out of its header block; lines get CR LF, the last one too. The library adds a Received line and, where\n"
        "they are missing, Date and Message-ID; Date and Resent-Date, if it can read them, it writes anew in the form\n"
        "of RFC 5322, without comments. Refused with exit code 65: what does not begin with a header field (vel split "
        "takes off\n"
        "the line that a mailbox puts before it), what holds NUL bytes, or CR inside a header field. The sender\n"
        "\"<>\" is nobody: what cannot be delivered to him is reported to nobody.\n"
        "\n"
        "--orcpt ORCPT is that of the first recipient, the next one that of the second; --orcpt ADDRESS=ORCPT is that\n"
        "of the recipient who is given as ADDRESS. An ORCPT is TYPE;ADDRESS in xtext, or an address of the type\n"
        "rfc822; --envid takes xtext too. All of these, --notify and --ret are those of RFC 3461.\n"
        "\n"
        "Exit codes of the queue: 69 it cannot be reached, 75 it has not taken the message (no space, perhaps); the\n"
        "reason is told. [Gateway] QueueDirectory is where it is.\n"
        "\n"
        "The JSON object: id, path (of the queue's message file), channel, sender, recipients.\n"
        "\n") +
    kAboutJsonTexts;

struct Options {
    std::string file, from, notify, ret, envid;
    std::string channel = kDefaultChannel;
    std::vector<std::string> to, originals;
};

void declare(CommandLine& line, Options& options) {
    line.add_argument("FILE", options.file, "The message; \"-\" is standard input").required();
    line.add_option("--from", "ADDRESS", options.from, "Who sends it").required();
    line.add_option("--to", "ADDRESS", options.to, "Who receives it").required();
    line.add_channel(options.channel, "Who takes it out of the queue").shows_default();
    line.add_option("--notify", "LIST", options.notify,
                    "When the sender wants a report: success,failure,delay or never");
    line.add_option("--ret", "WORD", options.ret, "How much of the message a report returns: full or hdrs");
    line.add_option("--envid", "ID", options.envid, "What a report calls the envelope");
    line.add_option("--orcpt", "ORCPT", options.originals, "Whom the sender has addressed, where it was somebody else");
    line.add_json();
}

Envelope envelope_of(const Options& options) {
    constexpr const char* kNobody = "<>";
    Envelope envelope{.sender = {},
                      .id = options.envid,
                      .return_type = return_type(options.ret),
                      .notify = notify_bits(options.notify),
                      .channel = options.channel,
                      .recipients = {},
                      .originals = original_recipients(options.originals, options.to)};
    expect_envelope_id(options.envid);
    expect_one_line("--channel", options.channel);
    if (options.from != kNobody) envelope.sender = parse_mailbox("--from", options.from).canonical;
    for (const Mailbox& recipient : parse_mailboxes("--to", options.to)) {
        envelope.recipients.push_back(recipient.canonical);
    }
    return envelope;
}

}  // namespace

Exit run_send(Arguments arguments, Session& main) {
    CommandLine line("send", "Puts a message into the queue.", kFooter);
    Options options;
    declare(line, options);
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    const Envelope envelope = envelope_of(options);
    line.files = {options.file};
    return for_each_file(line, main, [&](const std::string& file, Session& session) {
        const Input message = open_as_it_stands(file, session);
        send_message(outgoing_copy(message.path, session.scratch).path(), envelope, line.json, session);
        return Exit::success;
    });
}

}  // namespace vel::command
