// Bytes through a caller's buffer, and the writer of one uuencoded group: named helpers of the codec
// family for callers that go byte by byte; the codecs here work by blocks and do not call them.
#ifndef VEL_CODEC_BYTE_BUFFER_H
#define VEL_CODEC_BYTE_BUFFER_H

#include <cstdint>

// Hands out the next byte of a handle; -1 at the end or on failure.
//   index  the next byte's place; 0 or size: the buffer is read anew. A short read is moved to the
//          buffer's end, so that nothing from before is taken for input.
int getonechar(int handle, uint8_t* buffer, int size, int* index);

// Stores a byte, after writing the buffer when it is full. Returns 0, or -1 when a write falls short.
int writeonechar(int handle, int byte, uint8_t* buffer, int size, int* count);

// Writes what is stored. Returns 0 with the count at 0; -1 when the write falls short.
int flushallchar(int handle, uint8_t* buffer, int* count);

// Writes three bytes as four uuencoded characters, one by one. Returns 0, or -1 when a write fails.
int outenc(int a, int b, int c, int handle);

#endif
