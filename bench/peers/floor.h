/* The least that a leaf's file costs by libvel's contract for temporary names, whoever writes it. */
#ifndef VEL_BENCH_PEERS_FLOOR_H
#define VEL_BENCH_PEERS_FLOOR_H

/* Makes empty files, each with the system calls that its name takes (_veltempnam in vel/frame.h): the settings
   file's state is asked for, a counter file is opened, locked, read, written and closed, and it is asked whether
   the name is taken. Returns the number of files, or -1. */
long floor_of_files(long count, const char* folder);

#endif
