// From a file's two forks to BinHex text.
#ifndef VEL_CODEC_BINHEX_COMBINE_H
#define VEL_CODEC_BINHEX_COMBINE_H

#include "codec/binhex_header.h"

// Writes a whole BinHex text.
//   header           complete
//   in               an AppleSingle file, positioned at will
//   data_offset      of the data fork there, whose length the header tells
//   resource_offset  of the resource fork
// Returns 0; -1 when the input cannot be read or ends within a fork, and when a write fails.
int CombineBinhexRaw(tagBinhex_Header header, int in, uint32_t data_offset, uint32_t resource_offset, int out);

#endif
