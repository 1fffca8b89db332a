// What a gateway written in C++ does with the installed library; the calls that only C++ sees.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "layout.h"
#include "vel/platform/config.h"
#include "vel/platform/log.h"
#include "vel/vel.h"

namespace {

void check(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "cpp_program: failed: %s\n", what);
    std::exit(1);
}

struct FreeFile {
    void operator()(char* path) const { MimeFreeFile(path); }
};
using File = std::unique_ptr<char, FreeFile>;

struct FreeMessage {
    void operator()(mime_msg_pool* pool) const { MimeFreeMessage(&pool); }
};

File write(const char* text) {
    File path(VELGetTempFileName(nullptr, "msg"));
    check(path != nullptr, "a temporary name");
    const int handle = filecreate(path.get(), 0, 0);
    check(handle >= 0 && putline(handle, text) == 1 && fileclose(handle) == 1, "writing the message");
    return path;
}

std::string read(const File& path) {
    check(path != nullptr, "a body is delivered");
    std::string text;
    const int handle = fileopen(path.get(), 0, 0);
    for (char* line = nullptr; getline(handle, &line) == 1;) text += line;
    fileclose(handle);
    return text;
}

void capture(void* lines, int, const char*, const char* text) {
    static_cast<std::vector<std::string>*>(lines)->emplace_back(text);
}

}  // namespace

int main() {
    check(InitVELDll_NOMQ("cpp_program") == 1, "InitVELDll_NOMQ");

    const File message = write(
        "Subject: greetings\r\n"
        "\r\n"
        "Hello,\r\n"
        "mail!\r\n");
    mime_msg_pool* parsed = nullptr;
    check(MimeParseMessage(message.get(), 0, &parsed) == 1, "MimeParseMessage");
    const std::unique_ptr<mime_msg_pool, FreeMessage> pool(parsed);
    check(MimeGetNumberOfMessage(pool.get()) == 1, "one entity");
    const File body(MimeGetBody(MimeGetMsg(pool.get(), 0), 0, -1));
    check(read(body) == "Hello,\r\nmail!\r\n", "the body as it stands");

    char list[] = "Joe <joe@example.com>, ann@example.com";
    RecipTbl table{};
    check(VEL_RecipParse(list, &table, 1) == 2, "two addresses");
    check(std::string(table.last->local) == "ann", "the last one's local part");
    Clear_RT(&table);

    std::vector<std::string> lines;
    check(LogCaptureStart(capture, &lines) == 1, "LogCaptureStart");
    check(fileopen("/no/such/file", 0, 0) == -1, "a file that is missing");
    LogCaptureStop();
    check(lines.size() == 1 && lines[0].find("/no/such/file") != std::string::npos, "the log names the file");

    check(ProfileOverlaySet("Gateway", "TimeZone", "UTC0") == 1, "ProfileOverlaySet");
    char zone[16] = "";
    check(VELGetPrivateProfileString("Gateway", "TimeZone", "", zone, sizeof zone, iniFileName) == 4, "the overlay");
    ProfileOverlayClear();

    char codes[sizeof MagicRecord::macTypeCreator];
    check(libmagic_init() == 0, "libmagic_init");
    check(GetTypeCreatorfromDosExt("txt", codes) == 0 && std::string(codes) == "TEXTttxt", "Macintosh codes");
    libmagic_fini();

    TerminateVELDll();
    std::puts("cpp_program: all is well");
}
