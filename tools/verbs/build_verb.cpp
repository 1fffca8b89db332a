// vel build: a message out of a text and files.
#include <algorithm>
#include <optional>

#include "tools/compose/draft.h"
#include "tools/compose/outgoing.h"
#include "tools/io/target.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/sending.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Examples:\n"
        "  printf 'Hello Ann\\n' | vel build --from 'Jo <jo@example.com>' --to ann@example.com --subject Hi --text -\n"
        "  vel build --from jo@example.com --to ann@example.com --subject Archive --attach archive.mbox -o letter.eml\n"
        "\n"
        "The text's lines get CR LF, the last one too; else it arrives as it is, and attached files to the byte. Each\n"
        "goes out in 7 bits, quoted-printable or base64, whichever keeps it; types come from names and contents. An\n"
        "attached message (*.eml, or a file that begins like one) is enclosed as message/rfc822 where its lines are\n"
        "ASCII, as such messages may not be encoded: then its lines get CR LF too, and the library's parser counts "
        "the\n"
        "line end before the delimiter as the last one's. Any other message becomes application/octet-stream.\n"
        "\n"
        "The text is ASCII or UTF-8, or in the charset of --charset, as which it goes out. With --charset iso-2022-jp\n"
        "it is Shift-JIS, and converted; half-width katakana become full-width. Subject, names and header lines are\n"
        "UTF-8. An address is one mailbox, ADDRESS or NAME <ADDRESS>, with its domain. MIME-Version, Date and\n"
        "Message-ID are added, the last two unless --header gives them.\n"
        "\n"
        "Without -o and --send the message goes to standard output. --send puts it into the queue, as vel send does,\n"
        "for all of --to, --cc and --bcc, and prints the identifier; no line of it names those of --bcc.\n"
        "\n"
        "The JSON object, with --send: id, path (of the queue's message file), channel, sender, recipients.\n"
        "\n") +
    kAboutJsonTexts;

struct Options {
    std::string from;
    std::vector<std::string> to, cc, bcc, fields;
    std::string output, channel = kDefaultChannel;
    bool send = false;
    Draft draft;
};

void declare(CommandLine& line, Options& options) {
    line.add_option("--from", "ADDRESS", options.from, "The author").required();
    line.add_option("--to", "ADDRESS", options.to, "Recipients");
    line.add_option("--cc", "ADDRESS", options.cc, "Recipients of copies");
    line.add_option("--bcc", "ADDRESS", options.bcc, "Recipients of blind copies");
    line.add_option("--subject", "TEXT", options.draft.subject, "The subject");
    line.add_option("--text", "FILE", options.draft.text, "The text; \"-\" is standard input");
    line.add_option("--charset", "NAME", options.draft.charset, "Charset of the text");
    line.add_option("--attach", "FILE", options.draft.attachments, "Files to attach");
    line.add_option("--header", "LINE", options.fields, "Further header lines, NAME: VALUE");
    line.add_option("-o,--output", "PATH", options.output, "File to write, all of it or nothing");
    auto send = line.add_flag("--send", options.send, "Put it into the queue");
    line.add_channel(options.channel, "Who takes it out of the queue").shows_default().needs(send);
    line.add_json();
    line.option("--json").needs(send);
}

// What is wrong with options together; nothing when they go together.
const char* contradiction(const Options& options) {
    const Draft& draft = options.draft;
    const auto inputs =
        std::count(draft.attachments.begin(), draft.attachments.end(), "-") + (draft.text == "-" ? 1 : 0);
    if (inputs > 1) return "standard input can be read once";
    if (options.to.empty() && options.cc.empty() && options.bcc.empty()) return "--to, --cc or --bcc is required";
    if (options.send && options.output == "-") return "--send prints the identifier, so -o needs a file";
    return nullptr;
}

void complete(Options& options) {
    Draft& draft = options.draft;
    expect_one_line("--channel", options.channel);
    expect_one_line("--subject", draft.subject);
    draft.from = parse_mailbox("--from", options.from);
    draft.to = parse_mailboxes("--to", options.to);
    draft.cc = parse_mailboxes("--cc", options.cc);
    draft.bcc = parse_mailboxes("--bcc", options.bcc);
    draft.names_bcc = !options.send;
    for (const std::string& field : options.fields) add_field(draft, field);
}

Envelope envelope_of(const Options& options) {
    const Draft& draft = options.draft;
    Envelope envelope;
    envelope.sender = draft.from.canonical;
    envelope.channel = options.channel;
    for (const auto mailboxes : {&draft.to, &draft.cc, &draft.bcc}) {
        for (const Mailbox& mailbox : *mailboxes) envelope.recipients.push_back(mailbox.canonical);
    }
    return envelope;
}

// The file stands before the message is sent: whoever cannot have the one shall not have sent the other.
void build(const Options& options, bool json, Session& main) {
    std::optional<Target> target;
    if (!options.send || !options.output.empty()) {
        target.emplace(options.output.empty() ? "-" : options.output, main);
    }
    const ResultFile message = build_message(options.draft, main, target ? target->scratch() : main.scratch);
    std::optional<PrivateFile> outgoing;
    if (options.send) outgoing.emplace(outgoing_copy(message.get(), main.scratch));
    if (target) target->take(message.get());
    if (outgoing) send_message(outgoing->path(), envelope_of(options), json, main);
}

}  // namespace

Exit run_build(Arguments arguments, Session& main) {
    CommandLine line("build", "Builds a message from a text and files.", kFooter);
    Options options;
    declare(line, options);
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    if (const char* wrong = contradiction(options)) return line.misuse(wrong, main);
    complete(options);
    build(options, line.json, main);
    return Exit::success;
}

}  // namespace vel::command
