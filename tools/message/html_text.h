// HTML as text, by a program that others keep.
#ifndef VEL_TOOLS_MESSAGE_HTML_TEXT_H
#define VEL_TOOLS_MESSAGE_HTML_TEXT_H

#include <string>
#include <string_view>

#include "tools/io/scratch.h"

namespace vel::command {

// Makes a file of plain text, in UTF-8, out of one of HTML, by w3m or lynx.
//   charset  that the message names; empty: the one that the HTML names
// Throws Failure when neither is installed, and when it fails.
PrivateFile html_as_text(const std::string& file, std::string_view charset, Scratch& scratch);

}  // namespace vel::command

#endif
