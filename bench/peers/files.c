#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "harness.h"

enum { kNoInput = 66, kCannotCreate = 73 };

static void give_up(const char* path, int code) {
    perror(path);
    exit(code);
}

const char* next_leaf(const char* folder) {
    static char path[4096];
    static long number;
    snprintf(path, sizeof path, "%s/%08ld", folder, number++);
    return path;
}

int create(const char* path) {
    const int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd == -1) give_up(path, kCannotCreate);
    return fd;
}

int write_all(int fd, const void* bytes, size_t length) {
    const char* from = bytes;
    while (length > 0) {
        const ssize_t put = write(fd, from, length);
        if (put == -1 && errno == EINTR) continue;
        if (put <= 0) return -1;
        from += put;
        length -= (size_t)put;
    }
    return 0;
}

struct mapped map_file(const char* path) {
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    struct stat status;
    if (fd == -1 || fstat(fd, &status) != 0) give_up(path, kNoInput);
    struct mapped file = {.bytes = "", .length = (size_t)status.st_size};
    void* bytes = file.length ? mmap(NULL, file.length, PROT_READ, MAP_PRIVATE, fd, 0) : (void*)file.bytes;
    if (bytes == MAP_FAILED) give_up(path, kNoInput);
    close(fd);
    file.bytes = bytes;
    return file;
}

void unmap_file(struct mapped file) {
    if (file.length) munmap((void*)file.bytes, file.length);
}
