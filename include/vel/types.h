/* What every other header of libvel needs: the export mark and the records that two folders share. */
#ifndef VEL_TYPES_H
#define VEL_TYPES_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#error "libvel is built for POSIX systems"
#endif

/* Marks a name that programs may link; everything else in the library is hidden. */
#define VEL_API __attribute__((visibility("default")))

/* One node of a string chain: MIME parameters ("name=value"), header lines, notice lines.
   A chain is a pointer to its first node; null is the empty chain. */
typedef struct ms {
    char* text; /* owned */
    struct ms* next;
} ms;

#endif
