// vel headers: the header fields of messages.
#include <nlohmann/json.hpp>

#include "tools/io/private_copy.h"
#include "tools/message/extraction.h"
#include "tools/message/header_fields.h"
#include "tools/message/message_json.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/many_files.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Example:\n"
        "  printf 'From: Ann <ann@example.com>\\nDate: 1 Feb 99 10:20 EST\\n\\n' | vel headers -\n"
        "\n"
        "Addresses are shown in canonical form with phrase and comment; what is no address is left out (vel address\n"
        "tells more). Encoded words are shown in UTF-8; a text that cannot be converted is shown as it stands, marked\n"
        "\"(not converted)\". Of Date and Resent-Date the first counts; one that is no date is replaced by the current "
        "time,\n"
        "and said so. Of other fields that may stand once the first counts. \"other\" are the fields that the library\n"
        "does not know, \"envelope\" the lines of a queue's envelope. Of each of these at most 1000 are shown, and\n"
        "how many more there are: \"no field\", lines that are not stored; \"cut off\", what stands behind the first\n"
        "1024 bytes of a line; \"no address\", the fields with such a thing, and the first in each.\n"
        "With --part the header block of that entity is shown, by its index in vel parse; the message is parsed then,\n"
        "and what is said of vel parse holds. The exit code is 65 when the library complains about the block.\n"
        "\n"
        "The JSON object: file, part (null: the message), normalized, messages (level, text), lines (of the block),\n"
        "status_line (where the Status field stands, or 0), then the fields: separator (\"From \"), date, from, ...,\n"
        "received, other; envelope; no_fields, cut_off, no_addresses, and behind each its number (no_fields_count).\n"
        "What is absent is null. An address: kind, canonical, phrase, comment, local, domain, text (as it\n"
        "stands). A date: has_date, has_resent_date, readable, and if it is what vel date shows. The lines of a\n"
        "folded text are parted by CR LF TAB. All these are as they stand; decoded has the addresses and the texts in\n"
        "which encoded words may stand as people read them, lists of text and converted (vel parse --help).\n"
        "\n") +
    kAboutJsonTexts;

// What is shown of one file.
struct Shown {
    HeaderBlock block;
    bool normalized;
    Exit exit;
};

Exit exit_of(const HeaderBlock& block) { return block.said.empty() ? Exit::success : Exit::bad_data; }

Shown message_header(const std::string& name, Session& session) {
    const Input input = open_input(name, session);
    HeaderBlock block = read_header_block(input.path, session.journal);
    const Exit exit = exit_of(block);
    return {std::move(block), input.normalized, exit};
}

Shown part_header(const std::string& name, int part, const ParseOptions& options, Session& session) {
    const ParsedMessage message = parse_message(name, options, session);
    const MimeMsg& record = wanted_part(message, part);
    const PrivateFile header = copy_range({record.headerStart, record.bodyStart}, message.input.path, session.scratch);
    HeaderBlock block = read_header_block(header.path(), session.journal);
    const Exit exit = worse(message.exit(), exit_of(block));
    return {std::move(block), message.input.normalized, exit};
}

Json header_json(const std::string& name, std::optional<int> part, const Shown& shown) {
    Json object{
        {"file", json_text(name)},        {"part", part ? Json(*part) : Json()},
        {"normalized", shown.normalized}, {"messages", messages_json(shown.block.said)},
        {"lines", shown.block.lines},     {"status_line", shown.block.status_line},
    };
    object.update(fields_json(shown.block));
    return object;
}

std::string heading(const std::string& name, std::optional<int> part, const HeaderBlock& block) {
    std::string text = visible(name);
    if (part) text += ", part " + std::to_string(*part);
    return text + ": " + std::to_string(block.lines) + (block.lines == 1 ? " header line\n" : " header lines\n");
}

}  // namespace

Exit run_headers(Arguments arguments, Session& main) {
    CommandLine line("headers", "Shows the header fields of messages: addresses, dates and texts.", kFooter);
    std::optional<int> part;
    Texts texts = Texts::readable;
    line.add_files();
    line.add_json();
    line.add_flag(
        "--raw", [&] { texts = Texts::as_they_stand; }, "Show encoded words as they stand");
    auto by_part = line.add_number("--part", part, "Show the header block of this entity, by its index");
    line.add_nested();
    line.add_verbose();
    for (const char* of_parsing : {"--no-nested", "--verbose"}) line.option(of_parsing).needs(by_part);
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    return for_each_file(line, main, [&](const std::string& file, Session& session) {
        const Shown shown =
            part ? part_header(file, *part, line.parse_options, session) : message_header(file, session);
        for (const LogLine& said : shown.block.said) session.output.complain(file, said.text);
        if (line.json) {
            session.output.write(one_line(header_json(file, part, shown)).append("\n"));
        } else {
            session.output.write(heading(file, part, shown.block).append(fields_text(shown.block, texts)));
        }
        return shown.exit;
    });
}

}  // namespace vel::command
