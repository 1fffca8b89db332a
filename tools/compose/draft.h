// A message that is to be built.
#ifndef VEL_TOOLS_COMPOSE_DRAFT_H
#define VEL_TOOLS_COMPOSE_DRAFT_H

#include <optional>
#include <string>
#include <vector>

#include "tools/compose/file_type.h"
#include "tools/compose/mailbox.h"
#include "tools/io/library_owned.h"
#include "tools/io/session.h"

namespace vel::command {

struct Draft {
    Mailbox from;
    std::vector<Mailbox> to, cc, bcc;
    std::string subject;              // empty: none
    std::vector<std::string> fields;  // further header lines, as add_field makes them
    std::optional<std::string> text;  // a file; "-" is standard input, here and below
    std::string charset;              // of the text, see text_part
    std::vector<std::string> attachments;
    TypeOfFile type_of = type_of_file;  // of an attachment
    bool names_bcc = true;              // in a line of the message
};

// Adds a header line that the user has given. Throws Failure (usage) for what is none, and for a field that the
// command writes itself.
void add_field(Draft& draft, const std::string& line);

// Builds a message, of one part when nothing is attached. MIME-Version, Date and Message-ID are added where no field
// has been. The file stands in scratch. Throws Failure.
ResultFile build_message(const Draft& draft, Session& session, Scratch& scratch);

}  // namespace vel::command

#endif
