// The text of a header field, read on over folds (RFC 822 section 3.1.1) and comments (section 3.4.3).
//
// Positions point into a line's text, which ends in NUL. The end of a field is a position at CR LF.
#ifndef VEL_MIME_FIELD_TEXT_H
#define VEL_MIME_FIELD_TEXT_H

#include "vel/frame.h"

// The next line, in the file's line buffer, or null at the end of the file and on error. A line of
// one blank or TAB is skipped.
char* ReadNextHeaderLine(VEL_FILE* file);

// The first significant character at or after a position, possibly in a continuation line. Null for
// a null or empty text, an unterminated comment, or a file that ends. When the field ends, the line
// after it has been put back and the result points at CR LF.
char* EatCommentsAndSpace(VEL_FILE* file, char* position);

namespace vel {

inline bool is_blank(char c) { return c == ' ' || c == '\t'; }
inline bool at_line_end(const char* position) { return position[0] == '\r' && position[1] == '\n'; }

}  // namespace vel

#endif
