/* The driver of GMime: a stream over the file, parsed into parts that keep ranges of it, as its documentation shows. */
#include <fcntl.h>
#include <gmime/gmime.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "harness.h"

enum {
    kPiece = 65536,      /* bytes converted at once */
    kLeastMapped = 16384 /* bytes of a message; measured */
};

static const char* start(void) {
    g_mime_init();
    return g_strdup_printf("%u.%u.%u", gmime_major_version, gmime_minor_version, gmime_micro_version);
}

/* A small file is read faster than mapped, a large one the other way round. */
static GMimeStream* open_stream(const char* path, gint64 least_mapped) {
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    struct stat status;
    if (fd == -1 || fstat(fd, &status) != 0) return NULL;
    if (status.st_size < least_mapped) return g_mime_stream_fs_new(fd);
    return g_mime_stream_mmap_new(fd, PROT_READ, MAP_PRIVATE);
}

static GMimeMessage* parse(const char* path, gint64 least_mapped) {
    GMimeStream* stream = open_stream(path, least_mapped);
    if (!stream) return NULL;
    GMimeParser* parser = g_mime_parser_new_with_stream(stream);
    g_object_unref(stream);
    g_mime_parser_set_persist_stream(parser, TRUE);
    GMimeMessage* message = g_mime_parser_construct_message(parser, NULL);
    g_object_unref(parser);
    return message;
}

static int write_leaf(GMimePart* part, const char* folder) {
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
    GMimeStream* file = g_mime_stream_fs_open(next_leaf(folder), flags, 0600, NULL);
    if (!file) return -1;
    const ssize_t put = g_mime_data_wrapper_write_to_stream(g_mime_part_get_content(part), file);
    g_object_unref(file);
    return put == -1 ? -1 : 0;
}

/* All parts are made by now, so that walking them only counts them. */
static long walk(GMimeMessage* message, const char* folder) {
    long leaves = 0;
    GMimePartIter* iterator = g_mime_part_iter_new(GMIME_OBJECT(message));
    do {
        GMimeObject* part = g_mime_part_iter_get_current(iterator);
        if (!GMIME_IS_PART(part)) continue;
        leaves++;
        if (folder && write_leaf(GMIME_PART(part), folder) != 0) leaves = -1;
    } while (leaves != -1 && g_mime_part_iter_next(iterator));
    g_mime_part_iter_free(iterator);
    return leaves;
}

static long take_apart(const char* path, const char* folder) {
    GMimeMessage* message = parse(path, kLeastMapped);
    if (!message) return -1;
    const long leaves = walk(message, folder);
    g_object_unref(message);
    return leaves;
}

/* Decodes a uuencoded file in one piece: in pieces GMime loses its way at a line that ends in CR LF and is cut. */
static int decode_uu(const char* bytes, size_t length, const char* path) {
    const char* begin = g_strstr_len(bytes, (gssize)length, "begin ");
    const char* data = begin ? memchr(begin, '\n', length - (size_t)(begin - bytes)) : NULL;
    if (!data++) return -1;
    GMimeEncoding state;
    g_mime_encoding_init_decode(&state, GMIME_CONTENT_ENCODING_UUENCODE);
    state.state |= GMIME_UUDECODE_STATE_BEGIN;
    const size_t left = length - (size_t)(data - bytes);
    char* decoded = g_malloc(g_mime_encoding_outlen(&state, left));
    const size_t decoded_length = g_mime_encoding_flush(&state, data, left, decoded);
    const int out = create(path);
    const int result = write_all(out, decoded, decoded_length);
    close(out);
    g_free(decoded);
    return result;
}

/* GMime does not look for files in a text, so it is told that the body is one: a range of the mapped file. */
static long extract_uuencoded(const char* path, const char* folder) {
    GMimeMessage* message = parse(path, 0);
    if (!message) return -1;
    GMimePart* part = GMIME_PART(g_mime_message_get_mime_part(message));
    GMimeStream* body = g_mime_data_wrapper_get_stream(g_mime_part_get_content(part));
    const char* bytes = GMIME_STREAM_MMAP(body)->map + body->bound_start;
    const int result = decode_uu(bytes, (size_t)g_mime_stream_length(body), next_leaf(folder));
    g_object_unref(message);
    return result == 0 ? 1 : -1;
}

static int convert(GMimeEncoding* state, const char* input, const char* output) {
    static char piece[kPiece];
    const size_t room = g_mime_encoding_outlen(state, kPiece);
    char* converted = g_malloc(room);
    const int in = open(input, O_RDONLY | O_CLOEXEC);
    const int out = create(output);
    int failed = in == -1;
    ssize_t got = 0;
    while (!failed && (got = read(in, piece, kPiece)) > 0) {
        const size_t length = g_mime_encoding_step(state, piece, (size_t)got, converted);
        failed = write_all(out, converted, length);
    }
    if (!failed) failed = write_all(out, converted, g_mime_encoding_flush(state, NULL, 0, converted));
    close(out);
    close(in);
    g_free(converted);
    return failed || got < 0 ? -1 : 0;
}

static int encode(const char* encoding, const char* input, const char* output) {
    GMimeEncoding state;
    g_mime_encoding_init_encode(&state, g_mime_content_encoding_from_string(encoding));
    return convert(&state, input, output);
}

static int decode_uu_file(const char* input, const char* output) {
    const struct mapped file = map_file(input);
    const int result = decode_uu(file.bytes, file.length, output);
    unmap_file(file);
    return result;
}

static int decode(const char* encoding, const char* input, const char* output) {
    if (strcmp(encoding, "uuencode") == 0) return decode_uu_file(input, output);
    GMimeEncoding state;
    g_mime_encoding_init_decode(&state, g_mime_content_encoding_from_string(encoding));
    return convert(&state, input, output);
}

static long long count_addresses(char* list) {
    InternetAddressList* addresses = internet_address_list_parse(NULL, list);
    if (!addresses) return 0;
    const long long count = internet_address_list_length(addresses);
    g_object_unref(addresses);
    return count;
}

static long long read_date(const char* text) {
    GDateTime* date = g_mime_utils_header_decode_date(text);
    if (!date) return -1;
    const long long seconds = g_date_time_to_unix(date);
    g_date_time_unref(date);
    return seconds;
}

static char* decode_words(const char* value) { return g_mime_utils_header_decode_text(NULL, value); }

int main(int argc, char** argv) {
    const struct library gmime = {start,  take_apart,      extract_uuencoded, encode,
                                  decode, count_addresses, read_date,         decode_words};
    return drive(&gmime, argc, argv);
}
