/* What a gateway written in C does with the installed library: start, build, look up, parse, walk, extract, end. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "layout.h"
#include "vel/binhex.h"
#include "vel/build.h"
#include "vel/codec.h"
#include "vel/envelope.h"
#include "vel/frame.h"
#include "vel/japanese.h"
#include "vel/magic.h"
#include "vel/mime.h"
#include "vel/notify.h"
#include "vel/platform/config.h"
#include "vel/platform/log.h"
#include "vel/platform/queue.h"
#include "vel/rfc822.h"
#include "vel/types.h"
#include "vel/vel.h"
#include "vel/words.h"

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

/* Checks a text that a call has made, and frees it. */
static void expect_made(char* text, const char* wanted) {
    expect_text(text, wanted);
    free(text);
}

static void use_header_texts(void) {
    char mixed[] = "a\tb\r\n";
    uint8_t first = 0x88, second = 0x9F;
    check(IsStringAllAscii("a") == 1 && IsStringAllAscii("\xFC") == 0, "ASCII is told from the rest");
    expect_made(rfc1522encoding_wmc("an \xFC", "x"), "an =?x?B?/A==?=");
    expect_made(rfc1522decoding_wmc("an =?x?B?/A==?="), "an \xFC");
    expect_made(Get1522Charset("an =?x?B?/A==?="), "x");
    sjis2jis(&first, &second);
    check(first == 0x30 && second == 0x21, "a character becomes JIS");
    expect_made(bufShiftJIS2JIS("\x93\xFA"), "\033$BF|\033(J");
    expect_made(bufJIS2ShiftJIS_wmc("\033$BF|\033(J"), "\x93\xFA");
    expect_text(EliminateCntrlChars(mixed), "ab");
}

/* An AppleSingle file of a data fork "data" becomes BinHex text and comes back. */
static void use_binhex(void) {
    static const char apple[] = "\0\5\x16\0\0\2\0\0________________\0\1\0\0\0\1\0\0\0\x26\0\0\0\4data";
    char *source = VELGetTempFileName(NULL, "as"), *text = NULL, *back = NULL, *name = NULL;
    const int32_t head = 26 + 4 * 12; /* of a file with four entries, whose data fork comes first */
    char data[] = "....";
    uint32_t put = 0, got = 0;
    int handle = CreateFile(source, 0);
    check(WriteFile(handle, apple, sizeof apple - 1, &put, NULL) == 1 && CloseHandle(handle) == 1, "a file is written");
    check(ConvertASToBinHex(source, &text) == 0, "ConvertASToBinHex");
    handle = CreateFile(text, 1);
    check(ConvertBinHexToAS(handle, (long)GetFileSize(handle, NULL), &back, &name) == 0, "ConvertBinHexToAS");
    CloseHandle(handle);
    handle = CreateFile(back, 1);
    check(SetFilePointer(handle, head, NULL, 0) == head && ReadFile(handle, data, 4, &got, NULL) == 1, "reading it");
    CloseHandle(handle);
    expect_text(data, "data");
    expect_made(name, "");
    MimeFreeFile(source);
    MimeFreeFile(text);
    MimeFreeFile(back);
}

static void use_builders(void) {
    char* body = VELGetTempFileName(NULL, "txt");
    char name[] = "name=a.txt";
    const ms parameters = {name, NULL};
    const int handle = filecreate(body, 0, 1);
    check(putline(handle, "text\r\n") == 1 && fileclose(handle) == 1, "writing a body");
    expect_file(MimeBuildMessage("me@example.com", NULL, "A text", NULL, "text", "plain", &parameters, "7bit", NULL,
                                 NULL, body, NULL, 0),
                "From: me@example.com\r\nSubject: A text\r\n"
                "Content-type: text/plain; name=\"a.txt\"\r\nContent-transfer-encoding: 7bit\r\n"
                "Content-disposition: inline; filename=\"a.txt\"\r\n\r\ntext\r\n");
    MimeFreeFile(body);
}

/* The table of types that was installed is put into the queue's directory, where there is none. */
static void use_types(void) {
    MagicRecord record;
    char extension[sizeof record.extension];
    check(libmagic_init() == 0 && GetFirstMagicRecord(&record) == 0, "the table of types is opened");
    libmagic_fini();
    check(GetMagicFromExtension("JPG", &record) == 0, "a type is found");
    expect_text(record.contentType, "image");
    check(GetDosExtFromCTandCST(extension, record.contentType, record.contentSubtype) == 0, "an extension is found");
    expect_text(extension, "jpg");
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
    use_header_texts();
    use_binhex();
    use_builders();
    use_types();

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
