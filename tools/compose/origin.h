// The header lines that make a text a message (RFC 5322 section 3.6), as the library adds them when it submits one.
#ifndef VEL_TOOLS_COMPOSE_ORIGIN_H
#define VEL_TOOLS_COMPOSE_ORIGIN_H

#include <string>

namespace vel::command {

// "Date: " and the current time.
std::string date_line();

// "Message-ID: " and an identifier that no other message has, of the domain of an address. Throws Failure.
std::string message_id_line(const std::string& sender);

}  // namespace vel::command

#endif
