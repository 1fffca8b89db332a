// The locks of the header block parser and of the address parser. Whoever needs both takes
// csParseHdr first. Init822Parser creates them, Terminate822Parser deletes them.
#ifndef VEL_RFC822_PARSER_LOCKS_H
#define VEL_RFC822_PARSER_LOCKS_H

#include "vel/frame.h"

extern CRITICAL_SECTION csRecipParse;
extern CRITICAL_SECTION csParseHdr;

#endif
