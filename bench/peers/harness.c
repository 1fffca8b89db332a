#include "harness.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "floor.h"
#include "texts.h"

enum { kUsage = 64, kBadResult = 70 };

/* What is to be done, and what came of it. */
struct task {
    const struct library* library;
    const char* work;
    const char* output; /* folder, or file; null: none */
    struct texts input; /* paths, or lines */
    long long* results; /* one for each of the input's texts */
};

static double now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + 1e-9 * (double)time.tv_nsec;
}

/* The peak of the resident memory in KiB; reset first, it is what is resident now. */
static long peak_memory(int reset) {
    if (reset) {
        const int fd = open("/proc/self/clear_refs", O_WRONLY | O_CLOEXEC);
        if (fd == -1 || write_all(fd, "5", 1) != 0) perror("/proc/self/clear_refs");
        close(fd);
    }
    FILE* status = fopen("/proc/self/status", "re");
    char line[256];
    long peak = 0;
    while (status && fgets(line, sizeof line, status)) (void)sscanf(line, "VmHWM: %ld", &peak);
    if (status) fclose(status);
    return peak;
}

static void remove_output(const char* path) {
    DIR* folder = opendir(path);
    if (!folder) {
        unlink(path);
        return;
    }
    for (const struct dirent* entry = readdir(folder); entry; entry = readdir(folder)) {
        unlinkat(dirfd(folder), entry->d_name, 0);
    }
    closedir(folder);
}

/* The codec whose name begins the work, "base64-encode": 0, or -1; 1 for another work. */
static int convert(const struct task* task) {
    char encoding[32];
    const char* dash = strrchr(task->work, '-');
    if (!dash || dash - task->work >= (ptrdiff_t)sizeof encoding) return 1;
    memcpy(encoding, task->work, (size_t)(dash - task->work));
    encoding[dash - task->work] = '\0';
    const char* input = task->input.items[0];
    if (strcmp(dash, "-encode") == 0) return task->library->encode(encoding, input, task->output);
    if (strcmp(dash, "-decode") == 0) return task->library->decode(encoding, input, task->output);
    return 1;
}

static long long do_one(const struct task* task, char* text) {
    if (strcmp(task->work, "parse") == 0) return task->library->take_apart(text, NULL);
    if (strcmp(task->work, "extract") == 0) return task->library->take_apart(text, task->output);
    if (strcmp(task->work, "extract-uuencoded") == 0) return task->library->extract_uuencoded(text, task->output);
    if (strcmp(task->work, "addresses") == 0) return task->library->count_addresses(text);
    if (strcmp(task->work, "dates") == 0) return task->library->read_date(text);
    if (strcmp(task->work, "floor") == 0) return floor_of_files(strtol(text, NULL, 10), task->output);
    return convert(task) == 0 ? 1 : -1;
}

static double do_all(struct task* task) {
    const double start = now();
    for (size_t i = 0; i < task->input.count; i++) task->results[i] = do_one(task, task->input.items[i]);
    return now() - start;
}

static struct texts load(const char* work, const char* input) {
    if (strcmp(work, "nothing") == 0) return (struct texts){0};
    if (strcmp(work, "addresses") == 0 || strcmp(work, "dates") == 0) return lines_of(input);
    if (strcmp(work, "floor") == 0) return one_text(input);
    return files_of(input);
}

/* The sum of the results; dates are counted. */
static long long items(const struct task* task) {
    long long sum = 0;
    for (size_t i = 0; i < task->input.count; i++) {
        if (task->results[i] == -1) fprintf(stderr, "failed: %s\n", task->input.items[i]);
        sum += strcmp(task->work, "dates") == 0 ? 1 : task->results[i];
    }
    return sum;
}

/* What was found on each line, into a file. */
static int tell_results(const struct task* task) {
    FILE* file = fopen(task->output, "we");
    if (!file) return kBadResult;
    for (size_t i = 0; i < task->input.count; i++) fprintf(file, "%lld\n", task->results[i]);
    return fclose(file) == 0 ? 0 : kBadResult;
}

int drive(const struct library* library, int argc, char** argv) {
    if (argc < 4) {
        fprintf(stderr, "usage: %s WORK TIMES INPUT [OUTPUT]\n", argv[0]);
        return kUsage;
    }
    struct task task = {.library = library, .work = argv[1], .output = argc > 4 ? argv[4] : NULL};
    const char* version = library->start();
    if (strcmp(task.work, "version") == 0) return puts(version) < 0;

    double seconds = 0;
    long peak = 0;
    for (long times = strtol(argv[2], NULL, 10); times > 0; times--) {
        if (task.output) remove_output(task.output);
        free_texts(&task.input);
        free(task.results);
        task.input = load(task.work, argv[3]);
        task.results = calloc(task.input.count + 1, sizeof *task.results);
        const long before = peak_memory(1);
        seconds += do_all(&task);
        const long above = peak_memory(0) - before;
        if (above > peak) peak = above;
    }
    printf("%.9f %lld %ld\n", seconds, items(&task), peak);
    const int listed = strcmp(task.work, "addresses") == 0 || strcmp(task.work, "dates") == 0;
    const int code = listed && task.output ? tell_results(&task) : 0;
    free(task.results);
    free_texts(&task.input);
    return code;
}
