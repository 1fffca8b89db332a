// What the parts of a delivery report are (RFC 6522, RFC 6533).
#ifndef VEL_TOOLS_REPORT_REPORT_PARTS_H
#define VEL_TOOLS_REPORT_REPORT_PARTS_H

#include <string_view>

#include "vel/mime.h"

namespace vel::command {

bool is_status(const MimeMsg& record);
bool is_returned(const MimeMsg& record);
bool is_plain_text(const MimeMsg& record);  // or says nothing of its type
bool is_html(const MimeMsg& record);

// The report that a part makes of its message, where that is none on a delivery; null: no such part.
const char* other_report(const MimeMsg& record);

// A line that would make a part the returned message, in a multipart that could not be read as one.
bool begins_returned_part(std::string_view line);

}  // namespace vel::command

#endif
