/* The driver of libvel. Its settings come from $OSTRA_CONFIG_DIR, which names the folder for new files. Log lines
   are dropped unless VEL_DRIVER_LOG is set; then they go where the settings say. */
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vel/platform/log.h>
#include <vel/vel.h>

#include "harness.h"

enum { kWriting = 2, kDirect = 0 };

static void drop(void* context, int level, const char* application, const char* text) {
    (void)context, (void)level, (void)application, (void)text;
}

static const char* start(void) {
    if (!getenv("VEL_DRIVER_LOG")) LogCaptureStart(drop, NULL);
    InitVELDll_NOMQ("bench");
    return VEL_VERSION;
}

/* One open file serves all the leaves. */
static long extract(const mime_msg_pool* pool, const char* path) {
    const int message = open(path, O_RDONLY | O_CLOEXEC);
    long leaves = 0;
    for (int i = 0; message != -1 && i < pool->count; i++) {
        MimeMsg* part = MimeGetMsg(pool, i);
        if (part->boundary) continue;
        char* file = MimeGetBody(part, 0, message);
        leaves = file && leaves >= 0 ? leaves + 1 : -1;
        free(file);
    }
    return close(message) == 0 ? leaves : -1;
}

static long count_leaves(const mime_msg_pool* pool) {
    long leaves = 0;
    for (int i = 0; i < pool->count; i++) leaves += !MimeGetMsg(pool, i)->boundary;
    return leaves;
}

static long take_apart(const char* path, const char* folder) {
    mime_msg_pool* pool = NULL;
    if (MimeParseMessage(path, 1, &pool) < 0) return -1;
    const long leaves = folder ? extract(pool, path) : count_leaves(pool);
    MimeFreeMessage(&pool);
    return leaves;
}

/* Uuencode goes by lines, so its files are opened by libvel. */
static int encode_uu(const char* input, const char* output) {
    const int in = open(input, O_RDONLY | O_CLOEXEC);
    const int out = filecreate(output, kWriting, kDirect);
    const int result = uuencode(in, out, "bench.dat", NULL);
    close(in);
    return fileclose(out) == 1 && result == 1 ? 0 : -1;
}

static int decode_uu(const char* input, const char* output) {
    const int in = fileopen(input, 0, 0);
    const int out = create(output);
    const int result = uudecode(in, 0, out, NULL);
    close(out);
    return fileclose(in) == 1 && result == 1 ? 0 : -1;
}

/* BinHex too goes by files, and each new one gets a name from libvel. */
static int rename_made(int result, char* made, const char* output) {
    const int done = result == 0 && rename(made, output) == 0;
    free(made);
    return done ? 0 : -1;
}

static int encode_binhex(const char* input, const char* output) {
    char* made = NULL;
    const int result = ConvertASToBinHex(input, &made);
    return rename_made(result, made, output);
}

static int decode_binhex(const char* input, const char* output) {
    char* made = NULL;
    const int in = open(input, O_RDONLY | O_CLOEXEC);
    const int result = ConvertBinHexToAS(in, LONG_MAX, &made, NULL);
    close(in);
    return rename_made(result, made, output);
}

static int encode(const char* encoding, const char* input, const char* output) {
    if (strcmp(encoding, "uuencode") == 0) return encode_uu(input, output);
    if (strcmp(encoding, "binhex") == 0) return encode_binhex(input, output);
    const int in = open(input, O_RDONLY | O_CLOEXEC);
    const int out = create(output);
    const int done = strcmp(encoding, "base64") == 0 ? to64(in, out) == 0 : textToQp(in, out) == 1;
    close(out);
    close(in);
    return done ? 0 : -1;
}

static int decode(const char* encoding, const char* input, const char* output) {
    if (strcmp(encoding, "uuencode") == 0) return decode_uu(input, output);
    if (strcmp(encoding, "binhex") == 0) return decode_binhex(input, output);
    struct stat status;
    const int in = open(input, O_RDONLY | O_CLOEXEC);
    const int out = create(output);
    if (in == -1 || fstat(in, &status) != 0) return -1;
    const int32_t length = (int32_t)status.st_size;
    const int result = strcmp(encoding, "base64") == 0 ? from64(in, length, out) : fromqp(in, length, out);
    close(out);
    close(in);
    return result == 1 ? 0 : -1;
}

static long long count_addresses(char* list) {
    RecipTbl table = {0};
    const long long count = RecipParse(list, &table, 1);
    Clear_RT(&table);
    return count;
}

static long long read_date(const char* text) {
    UTCtime* time = NULL;
    if (!rfc2UTC(text, &time)) return -1;
    const long long seconds =
        seconds_since_1970(time->year, time->month, time->day, time->hour, time->minute, time->second, time->zone);
    free(time);
    return seconds;
}

int main(int argc, char** argv) {
    const struct library vel = {start,  take_apart,      take_apart, encode,
                                decode, count_addresses, read_date,  rfc1522decoding};
    return drive(&vel, argc, argv);
}
