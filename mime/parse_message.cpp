// The choice between the two parsers, by the message's MIME-Version (RFC 2045 section 4).
#include <memory>

#include "frame/access.h"
#include "mime/parse_failure.h"
#include "vel/mime.h"
#include "vel/rfc822.h"

namespace vel {
namespace {

struct HeaderFreed {
    void operator()(addr822* header) const { Free822Header(header); }
};

enum class MessageKind { failed, mime, flat };

bool is_version_one(const char* version) { return version && version[0] == '1' && version[1] == '.'; }

MessageKind kind_of(int handle) {
    const std::unique_ptr<addr822, HeaderFreed> header(New822Header());
    if (!header) {
        parse_failed("MimeParseMessage failed: out of memory.");
        return MessageKind::failed;
    }
    int lines = 0;
    int status_line = 0;
    const bool parsed = VEL_ParseHdr(handle, header.get(), &lines, &status_line) == 1;
    return parsed && is_version_one(header->mime_version) ? MessageKind::mime : MessageKind::flat;
}

}  // namespace
}  // namespace vel

extern "C" {

int MimeParseMessage(const char* path, int nested, mime_msg_pool** pool) {
    if (!pool) return -1;
    *pool = nullptr;
    if (!path || !*path || !vel::is_readable(path)) return -1;
    const int handle = fileopen(path, vel::kForReading, vel::kBuffered);
    if (handle == -1) return -1;
    const vel::MessageKind kind = vel::kind_of(handle);
    fileclose(handle);
    switch (kind) {
        case vel::MessageKind::mime: return ParseMimeMessage(path, nested, pool);
        case vel::MessageKind::flat: return ParseNonMimeMessage(path, pool);
        case vel::MessageKind::failed: break;
    }
    return -1;
}

}  // extern "C"
