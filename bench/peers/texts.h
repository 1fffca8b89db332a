/* The inputs of a driver: the lines of a file, or the paths of messages. */
#ifndef VEL_BENCH_PEERS_TEXTS_H
#define VEL_BENCH_PEERS_TEXTS_H

#include <stddef.h>

struct texts {
    size_t count;
    char** items;
    char* storage; /* what the items point into; null: each item is its own */
};

/* Each leaves the program when there is no memory or no such file. */
struct texts one_text(const char* text);
struct texts lines_of(const char* path); /* without their line ends */
struct texts files_of(const char* path); /* the file itself, or a folder's files by name */
void free_texts(struct texts* texts);

#endif
