// Parses a message, looked into and not, strict and lenient, and takes every body and header out of it.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "vel/frame.h"
#include "vel/mime.h"
#include "vel/platform/config.h"
#include "vel/platform/log.h"

namespace {

// Where bodies and headers go until they are removed.
char directory[] = "/tmp/vel-fuzz-XXXXXX";

// Makes the directory, which goes at the end, and a message file in memory.
int start() {
    if (!::mkdtemp(directory)) std::exit(1);
    std::atexit([] { std::filesystem::remove_all(directory); });
    ProfileOverlaySet("Gateway", "TemporaryDirectory", directory);
    LogCaptureStart([](void*, int, const char*, const char*) {}, nullptr);
    InitVELDll_NOMQ("fuzz");
    return ::memfd_create("message", 0);
}

void extract(const mime_msg_pool* pool, int fd) {
    for (int i = 0; i < MimeGetNumberOfMessage(pool); ++i) {
        MimeMsg* record = MimeGetMsg(pool, i);
        MimeFreeFile(MimeGetBody(record, 0, fd));
        MimeFreeFile(MimeGetHeader(record));
        MimeFreeFile(MimeGetBodyWithNoEmbeddedAttachment(record));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int fd = start();
    const std::string path = "/proc/self/fd/" + std::to_string(fd);
    if (::ftruncate(fd, 0) != 0 || ::pwrite(fd, data, size, 0) != static_cast<ssize_t>(size)) return 0;
    for (const int nested : {0, 1}) {
        ProfileOverlaySet("Options", "StrictMimeParsing", nested ? "YES" : "NO");
        mime_msg_pool* pool = nullptr;
        if (MimeParseMessage(path.c_str(), nested, &pool) == -1) ParseNonMimeMessage(path.c_str(), &pool);
        extract(pool, fd);
        MimeFreeMessage(&pool);
    }
    return 0;
}
