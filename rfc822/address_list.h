// The address list parser for callers who must know that nothing was left out.
#ifndef VEL_RFC822_ADDRESS_LIST_H
#define VEL_RFC822_ADDRESS_LIST_H

#include "vel/rfc822.h"

namespace vel {

// Reads the addresses of a text into an empty table, as VEL_RecipParse does. Where that leaves one out for want of
// memory it throws std::bad_alloc, and the table is empty.
void parse_addresses(char* text, RecipTbl& table);

}  // namespace vel

#endif
