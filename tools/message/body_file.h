// The body of one entity as a file.
#ifndef VEL_TOOLS_MESSAGE_BODY_FILE_H
#define VEL_TOOLS_MESSAGE_BODY_FILE_H

#include "tools/io/library_owned.h"
#include "tools/io/scratch.h"

namespace vel::command {

enum class Form {
    decoded,     // of a text with embedded files, the text around them
    whole_text,  // as decoded, but with embedded files left in
    raw,         // header block and body as stored
};

struct BodyFile {
    ResultFile file;
    bool decoded;               // false: the body calls for a decoding that has failed, or was not asked for
    bool apple_single = false;  // both forks of a Macintosh file, out of BinHex text
};

// Writes a body into a private directory; the record learns its true name. Throws Failure when it cannot be
// written.
BodyFile write_body(MimeMsg& record, Form form, Scratch& scratch);

// The body calls for a decoding that changes every text but, in quoted-printable, one without "=".
bool is_encoded(const MimeMsg& record);

// A delimiter line has ended the header block before any blank line: whatever the sender meant as the body
// counts as header lines.
bool hides_content_in_header(const MimeMsg& record);

// The size of a file that write_body has made.
uint64_t size_of(const ResultFile& file);

}  // namespace vel::command

#endif
