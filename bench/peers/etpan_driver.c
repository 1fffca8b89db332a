/* The driver of libetpan: the file is mapped, the parsed parts are ranges of it. It has no uuencode. */
#include <libetpan/libetpan.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "harness.h"

enum { kPiece = 65536 }; /* bytes collected before they are written */

static const char* start(void) {
    static char version[32];
    snprintf(version, sizeof version, "%d.%d", libetpan_get_version_major(), libetpan_get_version_minor());
    return version;
}

static int is_encoded(int encoding) {
    return encoding == MAILMIME_MECHANISM_BASE64 || encoding == MAILMIME_MECHANISM_QUOTED_PRINTABLE;
}

static int write_decoded(const char* bytes, size_t length, int encoding, const char* path) {
    char* decoded = NULL;
    size_t decoded_length = 0;
    size_t index = 0;
    if (mailmime_part_parse(bytes, length, &index, encoding, &decoded, &decoded_length) != MAILIMF_NO_ERROR) return -1;
    const int out = create(path);
    const int result = write_all(out, decoded, decoded_length);
    close(out);
    mailmime_decoded_part_free(decoded);
    return result;
}

/* What is not encoded is written as it lies in the file. */
static int write_leaf(const struct mailmime_data* body, const char* folder) {
    const char* bytes = body->dt_data.dt_text.dt_data;
    const size_t length = body->dt_data.dt_text.dt_length;
    if (is_encoded(body->dt_encoding)) return write_decoded(bytes, length, body->dt_encoding, next_leaf(folder));
    const int out = create(next_leaf(folder));
    const int result = write_all(out, bytes, length);
    close(out);
    return result;
}

static long walk(struct mailmime* part, const char* folder) {
    if (part->mm_type == MAILMIME_MESSAGE) {
        return part->mm_data.mm_message.mm_msg_mime ? walk(part->mm_data.mm_message.mm_msg_mime, folder) : 0;
    }
    if (part->mm_type == MAILMIME_SINGLE) {
        return folder && write_leaf(part->mm_data.mm_single, folder) != 0 ? -1 : 1;
    }
    long leaves = 0;
    for (clistiter* at = clist_begin(part->mm_data.mm_multipart.mm_mp_list); at; at = clist_next(at)) {
        const long found = walk(clist_content(at), folder);
        if (found == -1) return -1;
        leaves += found;
    }
    return leaves;
}

static long take_apart(const char* path, const char* folder) {
    const struct mapped file = map_file(path);
    struct mailmime* message = NULL;
    size_t index = 0;
    long leaves = -1;
    if (mailmime_parse(file.bytes, file.length, &index, &message) == MAILIMF_NO_ERROR) {
        leaves = walk(message, folder);
        mailmime_free(message);
    }
    unmap_file(file);
    return leaves;
}

/* Collects what an encoder writes in small pieces. */
struct output {
    int fd;
    size_t held;
    char bytes[kPiece];
};

static int flush(struct output* output) {
    const int result = write_all(output->fd, output->bytes, output->held);
    output->held = 0;
    return result;
}

static int collect(void* context, const char* bytes, size_t length) {
    struct output* output = context;
    if (length > kPiece - output->held && flush(output) != 0) return 0;
    if (length > kPiece) return write_all(output->fd, bytes, length) == 0 ? (int)length : 0;
    memcpy(output->bytes + output->held, bytes, length);
    output->held += length;
    return (int)length;
}

static int encode(const char* encoding, const char* input, const char* path) {
    static struct output output;
    const struct mapped file = map_file(input);
    int column = 0;
    output.fd = create(path);
    const int result =
        strcmp(encoding, "base64") == 0
            ? mailmime_base64_write_driver(collect, &output, &column, file.bytes, file.length)
            : mailmime_quoted_printable_write_driver(collect, &output, &column, 1, file.bytes, file.length);
    const int flushed = flush(&output);
    close(output.fd);
    unmap_file(file);
    return result == MAILIMF_NO_ERROR ? flushed : -1;
}

static int decode(const char* encoding, const char* input, const char* output) {
    const int base64 = strcmp(encoding, "base64") == 0;
    const struct mapped file = map_file(input);
    const int result = write_decoded(file.bytes, file.length,
                                     base64 ? MAILMIME_MECHANISM_BASE64 : MAILMIME_MECHANISM_QUOTED_PRINTABLE, output);
    unmap_file(file);
    return result;
}

static long long count_addresses(char* list) {
    struct mailimf_address_list* addresses = NULL;
    size_t index = 0;
    if (mailimf_address_list_parse(list, strlen(list), &index, &addresses) != MAILIMF_NO_ERROR) return 0;
    const long long count = clist_count(addresses->ad_list);
    mailimf_address_list_free(addresses);
    return count;
}

/* The zone is a number of the form hhmm. */
static long long read_date(const char* text) {
    struct mailimf_date_time* date = NULL;
    size_t index = 0;
    if (mailimf_date_time_parse(text, strlen(text), &index, &date) != MAILIMF_NO_ERROR) return -1;
    const int zone = date->dt_zone / 100 * 60 + date->dt_zone % 100;
    const long long seconds = seconds_since_1970(date->dt_year, date->dt_month, date->dt_day, date->dt_hour,
                                                 date->dt_min, date->dt_sec, zone);
    mailimf_date_time_free(date);
    return seconds;
}

int main(int argc, char** argv) {
    const struct library etpan = {start, take_apart, NULL, encode, decode, count_addresses, read_date, NULL};
    return drive(&etpan, argc, argv);
}
