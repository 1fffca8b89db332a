// Leaving nesting levels at a delimiter line.
#ifndef VEL_MIME_ROLL_BACK_H
#define VEL_MIME_ROLL_BACK_H

#include "mime/boundary_pool.h"
#include "vel/mime.h"

// Finds the level that a delimiter line belongs to and ends the containers above it. Behind a closing
// delimiter the epilogue is read up to the next line of the level around.
//   level  the current level; receives the new one, -1 when the line belongs to none
//   line   the delimiter line; it ends at its first CR or LF
// Returns 0; -1 when a level has no delimiter or container, or the file cannot be read.
int RollBackMimeLevel(VEL_FILE* file, const mime_msg_pool* containers, const boundary_pool* boundaries, int* level,
                      const char* line, int nested);

#endif
