#include "floor.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "harness.h"

enum { kPiece = 65536 };

static int take_number(const char* counter) {
    int number = 0;
    const int fd = open(counter, O_RDWR | O_CREAT | O_CLOEXEC, 0660);
    if (fd == -1 || flock(fd, LOCK_EX) != 0) return -1;
    if (read(fd, &number, sizeof number) < 0 || lseek(fd, 0, SEEK_SET) == -1) return -1;
    number++;
    if (write(fd, &number, sizeof number) != (ssize_t)sizeof number) return -1;
    return close(fd) == 0 ? number : -1;
}

static int make_file(const char* folder, const char* settings, const char* counter) {
    char path[4096];
    struct stat status;
    stat(settings, &status);
    const int number = take_number(counter);
    if (number == -1) return -1;
    snprintf(path, sizeof path, "%s/MIME%05d", folder, number);
    if (stat(path, &status) == 0) return -1;
    const int fd = open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    return fd == -1 ? -1 : close(fd);
}

long make_named_files(long count, const char* folder) {
    char counter[4096];
    char settings[4096];
    const char* configuration = getenv("OSTRA_CONFIG_DIR");
    snprintf(settings, sizeof settings, "%s/ostra.ini", configuration ? configuration : "/etc/ostra");
    snprintf(counter, sizeof counter, "%s/tmpcnt.$$$", folder);
    for (long i = 0; i < count; i++) {
        if (make_file(folder, settings, counter) != 0) return -1;
    }
    return count;
}

int copy_file(const char* input, const char* output) {
    static char piece[kPiece];
    const int in = open(input, O_RDONLY | O_CLOEXEC);
    const int out = create(output);
    int failed = in == -1;
    ssize_t got = 0;
    while (!failed && (got = read(in, piece, sizeof piece)) > 0) failed = write_all(out, piece, (size_t)got);
    close(out);
    close(in);
    return failed || got < 0 ? -1 : 0;
}
