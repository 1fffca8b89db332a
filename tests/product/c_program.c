/* What a gateway written in C does with the installed library: start, parse, walk, extract, end. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "layout.h"
#include "vel/codec.h"
#include "vel/frame.h"
#include "vel/mime.h"
#include "vel/platform/config.h"
#include "vel/platform/log.h"
#include "vel/platform/queue.h"
#include "vel/rfc822.h"
#include "vel/types.h"
#include "vel/vel.h"

static void check(int holds, const char* what) {
    if (holds) return;
    fprintf(stderr, "c_program: failed: %s\n", what);
    exit(1);
}

static const char* const message =
    "From: Joe <joe@example.com>\r\n"
    "MIME-Version: 1.0\r\n"
    "Content-Type: multipart/mixed; boundary=\"=b\"\r\n"
    "\r\n"
    "--=b\r\n"
    "Content-Type: text/plain\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "Content-ID: <one@example.com>\r\n"
    "\r\n"
    "SGVsbG8sIG1haWwhDQo=\r\n"
    "--=b\r\n"
    "Content-Type: application/octet-stream; name=data.bin\r\n"
    "Content-Disposition: attachment; filename=data.bin\r\n"
    "\r\n"
    "raw\r\n"
    "--=b--\r\n";

/* Checks what stands in a file that a call has made, and removes it. */
static void expect_file(char* path, const char* content) {
    char text[256] = "";
    char* line = NULL;
    int handle;
    check(path != NULL, "a file is made");
    handle = fileopen(path, 0, 0);
    check(handle >= 0, "the file can be read");
    while (VELGetLine(handle, &line) == 1 && strlen(text) + strlen(line) < sizeof text) strcat(text, line);
    fileclose(handle);
    check(strcmp(text, content) == 0, content);
    MimeFreeFile(path);
}

static void expect_text(const char* text, const char* wanted) {
    check(text != NULL && strcmp(text, wanted) == 0, wanted);
}

/* The calls on settings and locks that the rest of this program has no use for. */
static void use_settings_and_locks(void) {
    char path[sizeof VELTempDir + 16];
    CRITICAL_SECTION section;
    snprintf(path, sizeof path, "%s/own.ini", VELTempDir);
    check(VELWritePrivateProfileStringOld("Section", "Key", "12 and more", path) == 1, "a setting is stored");
    check(VELGetPrivateProfileIntOld("Section", "Key", 7, path) == 12, "a setting is read");
    check(VELGetPrivateProfileIntOld("Section", "Other", 7, path) == 7, "a missing setting");
    remove(path);
    InitializeCriticalSection(&section);
    EnterCriticalSection(&section);
    EnterCriticalSection(&section);
    LeaveCriticalSection(&section);
    LeaveCriticalSection(&section);
    DeleteCriticalSection(&section);
}

int main(void) {
    mime_msg_pool* pool = NULL;
    MimeMsg* record;
    int leaves = 1, multiparts = 0, handle;
    char* path;

    check(InitVELDll_NOMQ("c_program") == 1, "InitVELDll_NOMQ");
    check(bCalledInitVELDll == 0, "the queue was not asked for");
    expect_text(appName, "c_program");

    use_settings_and_locks();

    path = VELGetTempFileName(NULL, "msg");
    check(path != NULL, "VELGetTempFileName");
    handle = filecreate(path, 0, 1);
    check(handle >= 0 && putline(handle, message) == 1 && fileclose(handle) == 1, "writing the message");

    check(MimeParseMessage(path, 1, &pool) == 3, "MimeParseMessage");
    check(MimeGetNumberOfMessage(pool) == 3, "three entities");
    MimeGetNumLeafBodyParts(MimeGetMsg(pool, 0), &leaves);
    MimeGetNumMultipartHeaders(MimeGetMsg(pool, 0), &multiparts);
    check(leaves == 2 && multiparts == 1, "two leaves below one multipart");
    check(MimeGetMsg(pool, 0)->numChildren == 2, "two children");

    record = MimeGetMsg(pool, 1);
    expect_text(MimeGetContentType(record), "text");
    expect_text(MimeGetContentSubtype(record), "plain");
    expect_text(MimeGetContentTransferEncoding(record), "base64");
    expect_text(MimeGetContentID(record), "<one@example.com>");
    expect_file(MimeGetBody(record, 0, -1), "Hello, mail!\r\n");

    record = MimeGetMsg(pool, 2);
    expect_text(MimeGetContentDisposition(record), "attachment");
    check(MimeGetContentDescription(record) == NULL, "no description");
    expect_text(MimeGetContentDispositionParams(record)->text, "filename=data.bin");
    expect_file(MimeGetHeader(record),
                "Content-Type: application/octet-stream; name=data.bin\r\n"
                "Content-Disposition: attachment; filename=data.bin\r\n"
                "\r\n");

    MimeFreeMessage(&pool);
    check(pool == NULL, "MimeFreeMessage clears the pointer");
    MimeFreeFile(path);
    TerminateVELDll();
    puts("c_program: all is well");
    return 0;
}
