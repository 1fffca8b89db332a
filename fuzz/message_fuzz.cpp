// Parses a message, looked into and not, strict and lenient, and takes every body and header out of it.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz/directory.h"
#include "vel/frame.h"
#include "vel/mime.h"
#include "vel/platform/config.h"

namespace {

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
    static const int fd = start_in_directory();
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
