// vel parse: the entities of messages.
#include "tools/message/draw_tree.h"
#include "tools/message/message_json.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/many_files.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Examples:\n"
        "  printf 'Subject: test\\n\\ntext\\n' | vel parse -\n"
        "  vel parse --json -r ~/Maildir | jq -r '.parts[]? | [.index, .type, .subtype] | @tsv'\n"
        "\n"
        "A message whose header lines end in bare LF is read from a copy with CR LF (\"normalized\"). One that the\n"
        "library refuses is tried again, with exit code 65: with the lenient parameter grammar (\"lenient\"), from a\n"
        "copy without the header fields that are refused (\"repaired\"), as a message that is not MIME (\"flat\").\n"
        "Offsets are those of the copy.\n"
        "\n"
        "\"uncovered\" are bytes that belong to no entity: a last part that no delimiter ends, parts behind a\n"
        "delimiter line that ended the parse, parts that a boundary used twice hides. Delimiter lines, preambles\n"
        "and epilogues are not counted. A range begins at the part's first header line.\n"
        "\n"
        "The JSON object: file, mime, normalized, fallback, removed (the fields that a repaired copy lacks: name,\n"
        "why, line, start, end in the file that was repaired), messages (level, text), count, leaves, multiparts,\n"
        "uncovered (start, end), parts. A part: index, parent, depth, kind (0 not placed, 1 container or body that\n"
        "runs to the end of the file, 2 child), mime_version, type, subtype, encoding, disposition, id,\n"
        "description, params, disposition_params, boundary, header_start, body_start, body_end, children, decoded.\n"
        "These texts are as they stand; decoded has name and description as people read them: each text, in UTF-8, "
        "with\n"
        "encoded words and extended parameters (RFC 2231) resolved, and converted; when that is false the charset is\n"
        "not known, or the bytes are none of it, and the text is as it stands. What is absent is null; an end is the\n"
        "offset behind the last byte.\n"
        "\n") +
    kAboutJsonTexts;

}  // namespace

Exit run_parse(Arguments arguments, Session& main) {
    CommandLine line("parse", "Shows the entities of messages: types, encodings, byte ranges, file names.", kFooter);
    line.add_files();
    line.add_json();
    line.add_nested();
    line.add_verbose();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    return for_each_file(line, main, [&](const std::string& file, Session& session) {
        const ParsedMessage message = parse_message(file, line.parse_options, session);
        line.json ? write_json(message, session.output) : draw_tree(message, session.output);
        return message.exit();
    });
}

}  // namespace vel::command
