#include "texts.h"

#include <dirent.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "harness.h"

enum { kNoInput = 66, kNoMemory = 71 };

static void* checked(void* memory) {
    if (!memory) exit(kNoMemory);
    return memory;
}

static void append(struct texts* texts, char* text) {
    if ((texts->count & (texts->count - 1)) == 0) {
        const size_t room = texts->count ? 2 * texts->count : 1;
        texts->items = checked(realloc(texts->items, room * sizeof *texts->items));
    }
    texts->items[texts->count++] = text;
}

struct texts one_text(const char* text) {
    struct texts texts = {0};
    append(&texts, checked(strdup(text)));
    return texts;
}

struct texts lines_of(const char* path) {
    const struct mapped file = map_file(path);
    struct texts texts = {.storage = checked(malloc(file.length + 1))};
    memcpy(texts.storage, file.bytes, file.length);
    texts.storage[file.length] = '\0';
    for (char* line = strtok(texts.storage, "\r\n"); line; line = strtok(NULL, "\r\n")) append(&texts, line);
    unmap_file(file);
    return texts;
}

static int is_visible(const struct dirent* entry) { return entry->d_name[0] != '.'; }

struct texts files_of(const char* path) {
    struct dirent** entries = NULL;
    const int count = scandir(path, &entries, is_visible, alphasort);
    if (count < 0) return one_text(path);
    struct texts texts = {0};
    for (int i = 0; i < count; i++) {
        char* name = NULL;
        if (asprintf(&name, "%s/%s", path, entries[i]->d_name) < 0) exit(kNoMemory);
        append(&texts, name);
        free(entries[i]);
    }
    free(entries);
    return texts;
}

void free_texts(struct texts* texts) {
    for (size_t i = 0; !texts->storage && i < texts->count; i++) free(texts->items[i]);
    free(texts->items);
    free(texts->storage);
    *texts = (struct texts){0};
}
