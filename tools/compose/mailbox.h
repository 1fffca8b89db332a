// An address from the command line.
#ifndef VEL_TOOLS_COMPOSE_MAILBOX_H
#define VEL_TOOLS_COMPOSE_MAILBOX_H

#include <string>
#include <vector>

namespace vel::command {

struct Mailbox {
    std::string header;     // as it goes into a header line: in ASCII, a name in encoded words
    std::string canonical;  // without name and comment
};

// Reads an address of one mailbox; option is what it was given with. Throws Failure: bad_data for what the library
// does not take for one, usage for line breaks.
Mailbox parse_mailbox(const std::string& option, const std::string& text);
std::vector<Mailbox> parse_mailboxes(const std::string& option, const std::vector<std::string>& texts);

// Throws Failure (usage) for a value that holds a line break, or characters that are not UTF-8.
void expect_one_line(const std::string& option, const std::string& text);

}  // namespace vel::command

#endif
