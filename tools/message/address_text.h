// Addresses as people read them.
#ifndef VEL_TOOLS_MESSAGE_ADDRESS_TEXT_H
#define VEL_TOOLS_MESSAGE_ADDRESS_TEXT_H

#include <string>

#include "tools/text/readable.h"
#include "vel/rfc822.h"

namespace vel::command {

// 'phrase <canonical> (comment)'; a group says its phrase itself.
std::string address_text(const recipient& record);

// The same with the encoded words of phrase and comment resolved. A phrase in which characters come to light
// that mean something in an address is put in quotes.
Readable readable_address(const recipient& record);

}  // namespace vel::command

#endif
