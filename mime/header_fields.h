// The MIME fields of a header block (RFC 2045 sections 4 to 8, RFC 2183).
#ifndef VEL_MIME_HEADER_FIELDS_H
#define VEL_MIME_HEADER_FIELDS_H

#include "vel/mime.h"

namespace vel {

// One field while it is being read into its entity's record.
struct FieldBeingRead {
    VEL_FILE* file;
    MimeMsg& record;
    const char* name;  // in lower case with its colon, as the log has it
    char* value;       // behind the colon
};

// Each returns 0, or -1 with a log line for what it refuses.
int parse_mime_version(const FieldBeingRead& field);
int parse_content_id(const FieldBeingRead& field);
int parse_content_description(const FieldBeingRead& field);
int parse_content_type(const FieldBeingRead& field);
int parse_content_disposition(const FieldBeingRead& field);
int parse_content_transfer_encoding(const FieldBeingRead& field);

// Passes blanks, comments and folds before a field's value; null when there is no value.
char* begin_value(const FieldBeingRead& field);

// 0 when nothing but comments stands between a position and the field's end.
int expect_field_end(const FieldBeingRead& field, char* position);

}  // namespace vel

#endif
