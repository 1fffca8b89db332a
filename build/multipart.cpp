// A message of several parts, each of which stands in a file already.
#include <string>

#include "build/boundary.h"
#include "build/content.h"
#include "build/copy_lines.h"
#include "build/heading.h"
#include "build/new_message.h"
#include "build/preamble.h"
#include "build/texts.h"
#include "frame/access.h"
#include "frame/open_handle.h"
#include "vel/build.h"

namespace vel {
namespace {

struct Multipart {
    Heading heading;
    char* const* parts;
    const char* subtype;
    const ms* parameters;
    bool has_delimiters;

    // Kept: a blind copy or other lines do not make it a message of its own.
    bool is_part() const { return !heading.from && !heading.to && !heading.cc && !heading.subject; }
};

std::string type_line(const Multipart& message, const std::string& boundary) {
    std::string line("Content-type: multipart/");
    line.append(message.subtype ? message.subtype : "mixed").append("; boundary=\"").append(boundary).append("\"");
    add_parameters(line, message.parameters);
    return line.append(kLineEnd);
}

// A part whose last lines cannot be read is no part.
bool copy_part(const char* path, const std::string& delimiter, NewFile& file) {
    const OpenHandle in(fileopen(path, kForReading, kUnbuffered));
    return in && file.put(delimiter) && copy_lines(in.get(), file.handle()) == Copied::whole;
}

bool copy_parts(char* const* parts, const std::string& delimiter, NewFile& file) {
    for (; parts && *parts; ++parts) {
        if (!copy_part(*parts, delimiter, file)) return false;
    }
    return true;
}

bool write_parts(const Multipart& message, NewFile& file) {
    const std::string boundary = make_boundary();
    const std::string line_start = "\r\n--" + boundary;
    return file.put(type_line(message, boundary)) && (message.is_part() || write_preamble(file)) &&
           copy_parts(message.parts, line_start + "\r\n", file) && file.put(line_start + "--\r\n");
}

char* build(const Multipart& message) {
    return new_message(NewFile::Writes::buffered, [&](NewFile& file) {
        if (!file.put(lines_of(message.heading))) return false;
        return message.has_delimiters ? write_parts(message, file) : copy_parts(message.parts, {}, file);
    });
}

}  // namespace
}  // namespace vel

extern "C" {

char* MimeBuildMultipartMessage(const char* from, const ms* to, const char* subject, const ms* cc, char* const* parts,
                                const char* subtype, const ms* parameters, const ms* extra, int flags) {
    return MimeBuildMultipartMessageWithBCC(from, to, subject, cc, nullptr, parts, subtype, parameters, extra, flags);
}

char* MimeBuildMultipartMessageWithBCC(const char* from, const ms* to, const char* subject, const ms* cc, const ms* bcc,
                                       char* const* parts, const char* subtype, const ms* parameters, const ms* extra,
                                       int flags) {
    return vel::build({.heading = {.from = from, .to = to, .subject = subject, .cc = cc, .bcc = bcc, .extra = extra},
                       .parts = parts,
                       .subtype = subtype,
                       .parameters = parameters,
                       .has_delimiters = flags == 0});
}

}  // extern "C"
