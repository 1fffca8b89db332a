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

enum { kUsage = 64, kBadResult = 70, kNoMemory = 71 };

/* What is to be done, and what came of it. */
struct task {
    const struct library* library;
    const char* work;
    const char* output; /* folder, or file; null: none */
    struct texts input; /* paths, or lines */
    long long* results; /* one for each of the input's texts */
};

typedef long long (*work_step)(const struct task* task, char* text); /* what was found, or -1 */

struct totals {
    double elapsed; /* seconds */
    double processor;
    long kib;
};

static int is(const struct task* task, const char* work) { return strcmp(task->work, work) == 0; }

static int goes_by_lines(const struct task* task) {
    return is(task, "addresses") || is(task, "dates") || is(task, "words");
}

static double now(clockid_t clock) {
    struct timespec time;
    clock_gettime(clock, &time);
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

/* The steps, one a work: each does it on one of the input's texts. */

static long long parse(const struct task* task, char* path) { return task->library->take_apart(path, NULL); }

static long long extract(const struct task* task, char* path) { return task->library->take_apart(path, task->output); }

static long long extract_uuencoded(const struct task* task, char* path) {
    return task->library->extract_uuencoded(path, task->output);
}

static long long addresses(const struct task* task, char* line) { return task->library->count_addresses(line); }

static long long dates(const struct task* task, char* line) { return task->library->read_date(line); }

static long long words(const struct task* task, char* line) {
    char* text = task->library->decode_words(line);
    const long long length = text ? (long long)strlen(text) : -1;
    free(text);
    return length;
}

static long long make_names(const struct task* task, char* count) {
    return make_named_files(strtol(count, NULL, 10), task->output);
}

static long long copy(const struct task* task, char* path) { return copy_file(path, task->output); }

/* The encoding's name begins the work: "base64-encode". */
static long long convert(const struct task* task, char* path) {
    char encoding[32];
    const char* dash = strrchr(task->work, '-');
    if (!dash || dash - task->work >= (ptrdiff_t)sizeof encoding) return -1;
    memcpy(encoding, task->work, (size_t)(dash - task->work));
    encoding[dash - task->work] = '\0';
    if (strcmp(dash, "-encode") == 0) return task->library->encode(encoding, path, task->output);
    if (strcmp(dash, "-decode") == 0) return task->library->decode(encoding, path, task->output);
    return -1;
}

static work_step step_of(const char* work) {
    static const struct {
        const char* work;
        work_step step;
    } steps[] = {{"parse", parse},         {"extract", extract}, {"extract-uuencoded", extract_uuencoded},
                 {"addresses", addresses}, {"dates", dates},     {"words", words},
                 {"names", make_names},    {"copy", copy}};
    for (size_t i = 0; i < sizeof steps / sizeof *steps; i++) {
        if (strcmp(work, steps[i].work) == 0) return steps[i].step;
    }
    return convert;
}

static void do_all(struct task* task, struct totals* totals) {
    const work_step step = step_of(task->work);
    const double elapsed = now(CLOCK_MONOTONIC);
    const double processor = now(CLOCK_PROCESS_CPUTIME_ID);
    for (size_t i = 0; i < task->input.count; i++) task->results[i] = step(task, task->input.items[i]);
    totals->processor += now(CLOCK_PROCESS_CPUTIME_ID) - processor;
    totals->elapsed += now(CLOCK_MONOTONIC) - elapsed;
}

static struct texts load(const struct task* task, const char* input) {
    if (is(task, "nothing")) return (struct texts){0};
    if (is(task, "names")) return one_text(input);
    return goes_by_lines(task) ? lines_of(input) : files_of(input);
}

/* The sum of the results; dates are counted. */
static long long items(const struct task* task) {
    long long sum = 0;
    for (size_t i = 0; i < task->input.count; i++) {
        if (task->results[i] == -1) fprintf(stderr, "failed: %s\n", task->input.items[i]);
        sum += is(task, "dates") ? 1 : task->results[i];
    }
    return sum;
}

static void tell_text(const struct task* task, const char* line, FILE* file) {
    char* text = task->library->decode_words(line);
    fprintf(file, "%s\n", text ? text : "");
    free(text);
}

/* What was found on each line, into a file: a number, or of encoded words the text. */
static int tell_results(const struct task* task) {
    FILE* file = fopen(task->output, "we");
    if (!file) return kBadResult;
    for (size_t i = 0; i < task->input.count; i++) {
        if (is(task, "words")) {
            tell_text(task, task->input.items[i], file);
        } else {
            fprintf(file, "%lld\n", task->results[i]);
        }
    }
    return fclose(file) == 0 ? 0 : kBadResult;
}

static void release(struct task* task) {
    free_texts(&task->input);
    free(task->results);
}

/* Does the work once more, on its input as it was; the texts of a time before may have been changed. */
static void do_again(struct task* task, const char* input, struct totals* totals) {
    if (task->output) remove_output(task->output);
    release(task);
    task->input = load(task, input);
    task->results = calloc(task->input.count + 1, sizeof *task->results);
    if (!task->results) exit(kNoMemory);
    const long before = peak_memory(1);
    do_all(task, totals);
    const long above = peak_memory(0) - before;
    if (above > totals->kib) totals->kib = above;
}

int drive(const struct library* library, int argc, char** argv) {
    if (argc < 4) {
        fprintf(stderr, "usage: %s WORK TIMES INPUT [OUTPUT]\n", argv[0]);
        return kUsage;
    }
    struct task task = {.library = library, .work = argv[1], .output = argc > 4 ? argv[4] : NULL};
    struct totals totals = {0};
    const char* version = library->start();
    if (is(&task, "version")) return puts(version) < 0;
    for (long times = strtol(argv[2], NULL, 10); times > 0; times--) do_again(&task, argv[3], &totals);
    printf("%.9f %.9f %lld %ld\n", totals.elapsed, totals.processor, items(&task), totals.kib);
    const int code = goes_by_lines(&task) && task.output ? tell_results(&task) : 0;
    release(&task);
    return code;
}
