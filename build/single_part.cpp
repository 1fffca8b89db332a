// A message, or one part of one, from the caller's values and a file with its body.
#include "build/body.h"
#include "build/copy_lines.h"
#include "build/heading.h"
#include "build/new_message.h"
#include "build/texts.h"
#include "frame/access.h"
#include "frame/open_handle.h"
#include "vel/build.h"

namespace vel {
namespace {

// Bits of the flags; any of them leaves the content fields out.
constexpr int kUuencode = 1;

struct SinglePart {
    Heading heading;
    Content content;
    const char* body;
    int flags;
};

const char* or_default(const char* text, const char* fallback) { return text ? text : fallback; }

Content completed(Content content, int flags) {
    content.type = or_default(content.type, "application");
    content.subtype = or_default(content.subtype, "x-unknown");
    content.encoding = or_default(content.encoding, content.is("text") ? "quoted-printable" : "base64");
    const bool is_standard = ascii::equals_ignoring_case(content.encoding, "base64") ||
                             ascii::equals_ignoring_case(content.encoding, "quoted-printable");
    if ((flags & kUuencode) && is_standard) content.encoding = "x-uue";
    return content;
}

char* build(const SinglePart& part) {
    return new_message(NewFile::Writes::direct, [&](NewFile& file) {
        const Content content = completed(part.content, part.flags);
        std::string header = lines_of(part.heading);
        if (part.flags == 0) header.append(lines_of(content));
        return file.put(header.append(kLineEnd)) && write_body(content, part.body, file.handle());
    });
}

// The file has the rest of the header block too.
char* build(const Heading& heading, const char* rest) {
    return new_message(NewFile::Writes::direct, [&](NewFile& file) {
        if (!file.put(lines_of(heading))) return false;
        const OpenHandle in(fileopen(rest, kForReading, kUnbuffered));
        // Kept: a read that fails ends the message.
        return in && copy_lines(in.get(), file.handle()) != Copied::unwritten;
    });
}

}  // namespace
}  // namespace vel

extern "C" {

char* MimeBuildMessage(const char* from, const ms* to, const char* subject, const ms* cc, const char* type,
                       const char* subtype, const ms* parameters, const char* encoding, const char* id,
                       const char* description, const char* body, const ms* extra, int flags) {
    return MimeBuildMessageWithBCC(from, to, subject, cc, nullptr, type, subtype, parameters, encoding, id, description,
                                   body, extra, flags);
}

char* MimeBuildMessageWithBCC(const char* from, const ms* to, const char* subject, const ms* cc, const ms* bcc,
                              const char* type, const char* subtype, const ms* parameters, const char* encoding,
                              const char* id, const char* description, const char* body, const ms* extra, int flags) {
    return vel::build({.heading = {.from = from, .to = to, .subject = subject, .cc = cc, .bcc = bcc, .extra = extra},
                       .content = {.type = type,
                                   .subtype = subtype,
                                   .parameters = parameters,
                                   .encoding = encoding,
                                   .id = id,
                                   .description = description},
                       .body = body,
                       .flags = flags});
}

char* MimeBuildMessageV2(const char* from, const ms* to, const char* subject, const ms* cc, const char*, const char*,
                         const ms*, const char*, const char*, const char*, const char* body, const ms*, int) {
    return vel::build({.from = from, .to = to, .subject = subject, .cc = cc}, body);
}

}  // extern "C"
