// Questions about one record of a parsed message.
#ifndef VEL_TOOLS_MESSAGE_ENTITY_H
#define VEL_TOOLS_MESSAGE_ENTITY_H

#include <algorithm>

#include "tools/text/ascii.h"
#include "vel/mime.h"

namespace vel::command {

inline bool is_multipart(const MimeMsg& record) { return same(text_of(record.contentType), "multipart"); }

inline bool is_message(const MimeMsg& record) {
    return same(text_of(record.contentType), "message") && same(text_of(record.contentSubtype), "rfc822");
}

// The parser looked for parts in it: a multipart, or an enclosed message that was looked into.
inline bool is_opened(const MimeMsg& record) { return record.boundary != nullptr; }

// Its body is content of its own: all but containers. An enclosed message that was looked into and in
// which nothing was found is content; so is a text that holds embedded files.
inline bool has_content(const MimeMsg& record) {
    return !is_opened(record) || (record.numChildren == 0 && !is_multipart(record));
}

// A text between whose lines embedded files were found, which are its children.
inline bool has_embedded_files(const MimeMsg& record) { return !is_opened(record) && record.numChildren > 0; }

// Where the body ends, never before it starts.
inline uint32_t end_of_body(const MimeMsg& record) { return std::max(record.bodyStart, record.bodyEnd); }
inline uint32_t size_of_body(const MimeMsg& record) { return end_of_body(record) - record.bodyStart; }

}  // namespace vel::command

#endif
