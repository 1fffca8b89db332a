// vel show: messages as a person reads them.
#include "tools/message/letter.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/many_files.h"

namespace vel::command {
namespace {

constexpr const char* kFooter =
    "Examples:\n"
    "  printf 'From: Ann <ann@example.com>\\nSubject: =?utf-8?Q?Gr=C3=BC=C3=9Fe?=\\n\\nHello\\n' | vel show -\n"
    "  vel show --html-as-text -r ~/Maildir | less\n"
    "\n"
    "The header lines From, To, Cc, Date and Subject, then the text, then a table of the other parts by index, size,\n"
    "type and name; vel extract --part N writes them. Of a multipart/alternative the plain text is shown. Enclosed\n"
    "messages follow below their own header lines. Everything is in UTF-8, converted from its charset; a header line\n"
    "that cannot be converted is shown as it stands, marked \"(not converted)\". Bytes of a text that belong to no\n"
    "character, and characters that would steer the terminal, are shown as \\xe9 or \\u202e.\n"
    "\n"
    "--html-as-text gives a text in HTML to w3m, or to lynx, whichever is in PATH. The program fetches nothing, gets\n"
    "ten seconds and ends with this one; what it cannot show is listed, and said so, with exit\n"
    "code 74.\n"
    "\n"
    "Messages that the library refuses are read as vel parse reads them, with exit code 65.";

}  // namespace

Exit run_show(Arguments arguments, Session& main) {
    CommandLine line("show", "Shows messages as a person reads them: chief header lines, texts, other parts.", kFooter);
    bool html_as_text = false;
    line.add_files();
    line.add_flag("--html-as-text", html_as_text, "Show HTML, where there is no plain text, as text");
    line.add_nested();
    line.add_verbose();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    const bool many = line.recursive || line.files.size() > 1;
    return for_each_file(line, main, [&](const std::string& file, Session& session) {
        const ParsedMessage message = parse_message(file, line.parse_options, session);
        const Exit exit = write_letter(message, html_as_text, session);
        if (many) session.output.write("\n");
        return worse(exit, message.exit());
    });
}

}  // namespace vel::command
