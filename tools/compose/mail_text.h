// A text with the line ends, and in the charset, that it has in mail.
#ifndef VEL_TOOLS_COMPOSE_MAIL_TEXT_H
#define VEL_TOOLS_COMPOSE_MAIL_TEXT_H

#include <string>
#include <string_view>

#include "tools/io/scratch.h"

namespace vel::command {

constexpr std::string_view kJis = "ISO-2022-JP";

// A copy of a file in which every line ends in CR LF, the last one too. CR elsewhere stays.
PrivateFile with_mail_line_ends(const std::string& path, Scratch& scratch);

// The same of a text in a charset: UTF-8 when that is empty; Shift-JIS, which becomes JIS, when it is ISO-2022-JP.
// Throws Failure: bad_data, with the line, for bytes that are none of it; usage for a charset that does not have
// ASCII in it as it is.
PrivateFile as_mail_text(const std::string& path, const std::string& charset, Scratch& scratch);

}  // namespace vel::command

#endif
