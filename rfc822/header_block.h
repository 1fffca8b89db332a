// The header block parser without its lock.
#ifndef VEL_RFC822_HEADER_BLOCK_H
#define VEL_RFC822_HEADER_BLOCK_H

#include "vel/rfc822.h"

// As VEL_ParseHdr; the caller holds csParseHdr.
int ST_ParseHdr(int handle, addr822* header, int* lines, int* status_line);

#endif
