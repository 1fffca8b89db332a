/* What the drivers of the compared libraries share: their command line, the clock and the results.

   A driver does one work on one input, as often as it is told, and prints
     SECONDS PROCESSOR-SECONDS ITEMS KIB
   the elapsed and the processor time of the works alone, without start-up and cleaning, what was found in the last
   one (leaves, addresses, dates, bytes of header text), and by how much the resident memory peaked above what it was before a work. */
#ifndef VEL_BENCH_PEERS_HARNESS_H
#define VEL_BENCH_PEERS_HARNESS_H

#include <stddef.h>

/* One library's way of doing each work; null for what it does not offer. */
struct library {
    const char* (*start)(void); /* starts the library; returns its version */

    /* Parses a message file. With a folder each leaf is decoded into a new file of its own there, and the files'
       names are in the order of the leaves. Returns the number of leaves, or -1. */
    long (*take_apart)(const char* path, const char* folder);

    /* The same for a uuencoded file in a mail without MIME. */
    long (*extract_uuencoded)(const char* path, const char* folder);

    /* Converts a file into a new one; the encoding is a name of RFC 2045, "uuencode" or "binhex". Returns 0, or -1. */
    int (*encode)(const char* encoding, const char* input, const char* output);
    int (*decode)(const char* encoding, const char* input, const char* output);

    long long (*count_addresses)(char* list); /* may change the text */
    long long (*read_date)(const char* text); /* seconds since 1970 */

    /* A header field's value without its encoded words. Returns a malloc'ed text, or null. */
    char* (*decode_words)(const char* value);
};

/* The driver's main. Returns the exit code. */
int drive(const struct library* library, int argc, char** argv);

/* The path of the next leaf's file; lives until the next call. */
const char* next_leaf(const char* folder);

/* Opens a new file for writing; leaves the program when it cannot. */
int create(const char* path);

/* Writes everything. Returns 0, or -1. */
int write_all(int fd, const void* bytes, size_t length);

/* A whole file, mapped for reading; leaves the program when it cannot. */
struct mapped {
    const char* bytes;
    size_t length;
};
struct mapped map_file(const char* path);
void unmap_file(struct mapped file);

/* Seconds since 1970 of a date and time at a zone, in minutes east of UTC (the Gregorian calendar). */
long long seconds_since_1970(int year, int month, int day, int hour, int minute, int second, int zone);

#endif
