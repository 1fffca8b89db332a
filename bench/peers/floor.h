/* What the system calls alone cost of a work, whichever library does it. */
#ifndef VEL_BENCH_PEERS_FLOOR_H
#define VEL_BENCH_PEERS_FLOOR_H

/* Makes empty files, each with the system calls that its name takes (_veltempnam in vel/frame.h): the settings
   file's state is asked for, a counter file is opened, locked, read, written and closed, and it is asked whether
   the name is taken. Returns the number of files, or -1. */
long make_named_files(long count, const char* folder);

/* Copies a file into a new one, a block of 64 KiB at a time: what any codec has to read and write. Returns 0, or -1. */
int copy_file(const char* input, const char* output);

#endif
