// The parts of a message to be built: what the library's builders are handed for each.
//
// A body is written so that it comes back byte by byte. 7bit and quoted-printable are for lines as mail has them; where
// they would not do, base64 does. Within a multipart the line end before a delimiter counts as the body's for the
// library's parser, but not for other readers (RFC 2046 section 5.1.1). Quoted-printable serves both: its encoder adds
// a line end, which stands for the body's last, so that one is cut off before.
#ifndef VEL_TOOLS_COMPOSE_PART_H
#define VEL_TOOLS_COMPOSE_PART_H

#include <string>
#include <vector>

#include "tools/compose/file_type.h"
#include "tools/io/input.h"
#include "tools/io/session.h"

namespace vel::command {

struct Part {
    Input body;
    FileType type;
    std::vector<std::string> parameters;
    const char* encoding;
};

// The text of the message: every line ends in CR LF, the last one too.
//   charset   empty: ASCII or UTF-8. Of ISO-2022-JP the file is Shift-JIS
//   enclosed  it becomes a part of a multipart
// Throws Failure: bad_data, with the line, for what is no text of the charset; usage for a charset that a text in
// mail cannot have.
Part text_part(const std::string& file, const std::string& charset, bool enclosed, Session& session);

// A file as it stands, for a multipart, under its name; but the lines of a message (message/rfc822) end in CR LF.
// Throws Failure.
Part attached_part(const std::string& file, const TypeOfFile& type_of, Session& session);

}  // namespace vel::command

#endif
