// vel notify: what the gateway itself has to say, by mail.
#include <list>

#include "tools/compose/draft.h"
#include "tools/compose/outgoing.h"
#include "tools/settings/gateway_name.h"
#include "tools/text/ascii.h"
#include "tools/types/gateway_type.h"
#include "tools/types/table.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/sending.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Example:\n"
        "  printf 'The disk is nearly full.\\n' | vel notify --to ann@example.com --subject Disk --text - --attach "
        "/etc/hostname\n"
        "\n"
        "Puts a message of a text and files into the queue and prints the identifier. Files have the types of\n"
        "messages that the gateway makes by itself, which vel types of tells: text/basic when they are ASCII alone,\n"
        "else what the table of types has for their extension, else application/x-unknown; each is in the encoding\n"
        "that keeps it byte by byte. The text is ASCII or UTF-8. Without --from the message is from the postmaster\n"
        "of the gateway ([Connection] GatewayHostName and GatewayDomain), to whom it returns when it cannot be\n"
        "delivered.\n"
        "\n"
        "Exit codes: 69 the queue cannot be reached, 75 it has not taken the message, 78 there is no table of types,\n"
        "or the gateway has no name and --from is not said; the reason is told, and nothing is printed.\n"
        "\n"
        "The JSON object: id, path (of the queue's message file), channel, sender, recipients.\n"
        "\n") +
    kAboutJsonTexts;

struct Options {
    std::string from, channel = kDefaultChannel;
    std::vector<std::string> to;
    Draft draft;
};

void declare(CommandLine& line, Options& options) {
    line.add_option("--to", "ADDRESS", options.to, "Who receives it").required();
    line.add_option("--subject", "TEXT", options.draft.subject, "The subject").required();
    line.add_option("--text", "FILE", options.draft.text, "The text; \"-\" is standard input").required();
    line.add_option("--attach", "FILE", options.draft.attachments, "Files to attach");
    line.add_option("--from", "ADDRESS", options.from, "Whom it is from; the postmaster by default");
    line.add_channel(options.channel, "Who takes it out of the queue").shows_default();
    line.add_json();
}

std::string postmaster() { return std::string("postmaster@").append(gateway_name()); }

void complete(Options& options) {
    Draft& draft = options.draft;
    expect_one_line("--channel", options.channel);
    expect_one_line("--subject", draft.subject);
    draft.from = parse_mailbox("--from", options.from.empty() ? postmaster() : options.from);
    draft.to = parse_mailboxes("--to", options.to);
}

// The types of files in the gateway's own messages.
class GatewayTypes {
  public:
    explicit GatewayTypes(Session& session) : session_(session) {}

    FileType operator()(const std::string& path, std::string_view name) {
        if (is_ascii_file(path)) return {"text", "basic"};
        if (!table_) table_.emplace(session_);
        const auto record = type_by_extension(std::string(name));
        if (!record) return {"application", "x-unknown"};
        const MagicRecord& kept = records_.emplace_back(*record);
        const FileType type{kept.contentType, kept.contentSubtype};
        // Parts of these types may not be encoded (RFC 2045 section 6.4).
        const bool is_composite = same(type.type, "multipart") || same(type.type, kMessageType.type);
        return is_composite && type != kMessageType ? kBinaryType : type;
    }

  private:
    Session& session_;
    std::optional<TypesTable> table_;  // from the first file that it is asked about
    std::list<MagicRecord> records_;   // whose texts are handed out
};

Envelope envelope_of(const Options& options) {
    Envelope envelope;
    envelope.sender = options.draft.from.canonical;
    envelope.channel = options.channel;
    for (const Mailbox& mailbox : options.draft.to) envelope.recipients.push_back(mailbox.canonical);
    return envelope;
}

}  // namespace

// The library's call for such messages does not tell when the queue refuses one.
Exit run_notify(Arguments arguments, Session& main) {
    CommandLine line("notify", "Sends a message of the gateway's own: a text and files.", kFooter);
    Options options;
    declare(line, options);
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    complete(options);
    GatewayTypes types(main);
    options.draft.type_of = [&](const std::string& path, std::string_view name, const ContentFacts&) {
        return types(path, name);
    };
    const ResultFile message = build_message(options.draft, main, main.scratch);
    send_message(outgoing_copy(message.get(), main.scratch).path(), envelope_of(options), line.json, main);
    return Exit::success;
}

}  // namespace vel::command
